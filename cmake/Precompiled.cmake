# torvane_precompile(TARGET [HEADERS...]): where TORVANE_PRECOMPILE is on, reads what most sources
# include once instead of for each of them, which takes most of a cold build's time. Off, every
# source has to include what it needs.
option(TORVANE_PRECOMPILE "Precompile common headers" OFF)

set(common_headers <algorithm> <array> <chrono> <functional> <map> <memory> <mutex> <optional> <set>
  <span> <string> <string_view> <tuple> <utility> <variant> <vector> <boost/json.hpp>)

function(torvane_precompile target)
  if(NOT TORVANE_PRECOMPILE)
    return()
  elseif(ARGN)
    target_precompile_headers(${target} PRIVATE ${common_headers} ${ARGN})
  elseif(TARGET torvane_common_headers)
    target_precompile_headers(${target} REUSE_FROM torvane_common_headers)
  else()
    file(WRITE ${PROJECT_BINARY_DIR}/common_headers.cpp "")
    add_library(torvane_common_headers OBJECT ${PROJECT_BINARY_DIR}/common_headers.cpp)
    target_link_libraries(torvane_common_headers PRIVATE Boost::headers PkgConfig::sodium)
    target_precompile_headers(torvane_common_headers PRIVATE ${common_headers})
    torvane_precompile(${target})
  endif()
endfunction()
