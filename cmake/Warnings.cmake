# torvane_library(NAME SOURCES... [LINK libraries...]) and torvane_warnings(TARGET): every target
# of ours is compiled with the same warnings, and each warning is an error. Those that GCC derives
# from optimised code see null pointers and overflows where there are none.

function(torvane_warnings target)
  set(optimised -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Woverloaded-virtual -Wformat=2 -Werror
    "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:${optimised}>")
endfunction()

function(torvane_library name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_UNPARSED_ARGUMENTS})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LINK})
  torvane_warnings(${name})
  torvane_precompile(${name})
endfunction()

function(torvane_executable name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  torvane_warnings(${name})
endfunction()

# For a target whose own speed nobody sees, or whose templates take a minute to optimise.
function(torvane_compile_quickly target)
  target_compile_options(${target} PRIVATE "$<$<CONFIG:Debug>:-O0>")
endfunction()

# For a target that Asio's own code is inlined into, which GCC warns about depending on how much it
# optimises, and with -fsanitize=thread.
function(torvane_asio_warnings target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-null-dereference -Wno-tsan)
  endif()
endfunction()
