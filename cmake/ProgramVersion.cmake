# What a program says for --version: TORVANE_VERSION and TORVANE_BUILD_NUMBER, as texts.
function(torvane_name_version target)
  target_compile_definitions(${target} PRIVATE
    TORVANE_VERSION="${PROJECT_VERSION}" TORVANE_BUILD_NUMBER="${TORVANE_BUILD_NUMBER}")
endfunction()
