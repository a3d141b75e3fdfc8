# Warnings, visibility and sanitizers shared by every target of the project.
add_library(zu_warnings INTERFACE)
target_compile_options(zu_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wno-format-truncation)

set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# A sanitized library needs the sanitizer runtime in every program that
# loads it, so the link option also travels to consumers (see src/).
if(ZUUTILS_SANITIZE AND NOT WIN32)
  add_compile_options(-fsanitize=${ZUUTILS_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZUUTILS_SANITIZE})
endif()

# Fuzzing instruments the library and its targets for coverage; only the
# targets link libFuzzer's main (fuzz/).
if(ZUUTILS_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(WIN32 AND CMAKE_CROSSCOMPILING)
  # The mingw runtime DLLs go next to the programs so that a bare wine prefix
  # runs them; nothing has to be installed into the prefix.
  set(ZUUTILS_RUNTIME_DLLS "")
  foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}" OR NOT EXISTS "${path}")
      message(FATAL_ERROR "mingw runtime ${dll} not found")
    endif()
    list(APPEND ZUUTILS_RUNTIME_DLLS "${path}")
  endforeach()
endif()
