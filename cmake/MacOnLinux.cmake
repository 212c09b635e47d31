# A toolchain that compiles the Mac's program on Linux, for one processor, with the project's own
# declarations in place of the system's headers. scripts/build-mac names to it
#   TORVANE_MAC_ARCH    arm64 or x86_64
#   TORVANE_MAC_PARTS   the folder of what it has made before: libraries and link stubs
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TORVANE_MAC_ARCH TORVANE_MAC_PARTS)
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 22)
set(CMAKE_SYSTEM_PROCESSOR ${TORVANE_MAC_ARCH})
set(CMAKE_OSX_SYSROOT ${TORVANE_MAC_PARTS}/sdk)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # what a program of its own needs is not declared

foreach(tool AR RANLIB OTOOL INSTALL_NAME_TOOL)
  string(TOLOWER llvm-${tool}-19 name)
  string(REPLACE _ - name ${name})
  set(CMAKE_${tool} /usr/bin/${name})
endforeach()

execute_process(COMMAND clang-19 -print-resource-dir
  OUTPUT_VARIABLE resources OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)
set(mac ${root}/tests/mac)
# The names of files in the program are the same wherever it is built, with ccache or without.
foreach(language CXX OBJCXX)
  set(CMAKE_${language}_COMPILER /usr/bin/clang++-19)
  set(CMAKE_${language}_COMPILER_TARGET ${TORVANE_MAC_ARCH}-apple-macos13)
  set(CMAKE_${language}_FLAGS_INIT "-nostdinc -nostdinc++ -isystem ${mac}/libcxx \
-isystem /usr/lib/llvm-19/include/c++/v1 -isystem ${resources}/include -isystem ${mac}/libc \
-isystem ${mac}/include -fvisibility=hidden -ffunction-sections -Wunguarded-availability \
-Xclang -fno-pch-timestamp -ffile-prefix-map=${root}/= \
-ffile-prefix-map=../../boost=build/mac/boost")
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "--ld-path=/usr/bin/ld64.lld-19 -mlinker-version=705 -Wl,-fatal_warnings \
-Wl,-dead_strip -Wl,-adhoc_codesign")
set(TORVANE_MAC_LINK_STUBS ${TORVANE_MAC_PARTS}/sdk.made)

# Libraries: those that were made for this processor, and none of this computer's.
set(ENV{PKG_CONFIG_LIBDIR} ${TORVANE_MAC_PARTS}/${TORVANE_MAC_ARCH}/lib/pkgconfig)
set(Boost_DIR ${TORVANE_MAC_PARTS}/${TORVANE_MAC_ARCH}/lib/cmake)
set(CMAKE_HAVE_LIBC_PTHREAD ON)
