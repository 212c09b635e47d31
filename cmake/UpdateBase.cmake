# Where new builds are looked for: a build setting, checked here. By itself as a script:
#   cmake -DTORVANE_UPDATE_BASE=https://… -P cmake/UpdateBase.cmake
if(NOT DEFINED TORVANE_UPDATE_BASE)
  set(TORVANE_UPDATE_BASE "https://torvane.example/torvane" CACHE STRING
    "Base address of the update site: an HTTPS URL that ends in \"/torvane\"")
endif()
if(NOT TORVANE_UPDATE_BASE MATCHES "^https://[A-Za-z0-9.-]+(:[0-9]+)?(/[A-Za-z0-9._~-]+)*/torvane$")
  message(FATAL_ERROR
    "TORVANE_UPDATE_BASE must be an HTTPS URL that ends in \"/torvane\": ${TORVANE_UPDATE_BASE}")
endif()
