# What turns memory errors into an end of the program, or makes them hard to use: the flags that
# Debian gives its own packages, and a few more. On in the preset "release".
option(TORVANE_HARDENING "Compile with the protections of a release" OFF)
if(NOT TORVANE_HARDENING)
  return()
endif()

include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
# Not every processor has each of these.
foreach(flag stack-protector-strong stack-clash-protection cf-protection)
  string(MAKE_C_IDENTIFIER "TORVANE_HAS_${flag}" has)
  check_cxx_compiler_flag("-f${flag}" ${has})
  if(${has})
    add_compile_options("-f${flag}")
  endif()
endforeach()
if(NOT APPLE)
  add_link_options(-Wl,-z,relro,-z,now)
endif()
