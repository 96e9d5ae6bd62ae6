# Language level, warnings and sanitizers of every target in this project: link zantrel_options.
# Nothing here touches a global flag, so that a project which adds this one keeps its own.

if(PROJECT_IS_TOP_LEVEL)
  find_program(CCACHE_PROGRAM ccache)
  if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Paths relative to the source folder let all checkouts share one cache.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}
      CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
  endif()
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
  endif()
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  set(CMAKE_CXX_EXTENSIONS OFF)
endif()

add_library(zantrel_options INTERFACE)
target_compile_features(zantrel_options INTERFACE cxx_std_20)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(zantrel_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # g++ 12 sees overlapping copies in the joining of a literal and a std::string (GCC bug 105651).
    target_compile_options(zantrel_options INTERFACE -Wno-restrict)
  endif()
  if(ZANTREL_WERROR)
    target_compile_options(zantrel_options INTERFACE -Werror)
  endif()
endif()
if(ZANTREL_SANITIZE)
  target_compile_options(zantrel_options INTERFACE
    -fsanitize=${ZANTREL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(zantrel_options INTERFACE -fsanitize=${ZANTREL_SANITIZE})
endif()
if(ZANTREL_COVERAGE)
  target_compile_options(zantrel_options INTERFACE --coverage)
  target_link_options(zantrel_options INTERFACE --coverage)
endif()
if(MINGW)
  # GCC keeps the stack of 64-bit Windows aligned to 16 bytes only, yet spills 32- and 64-byte
  # vectors with aligned moves; the assembler turns those into unaligned ones.
  target_compile_options(zantrel_options INTERFACE -Wa,-muse-unaligned-vector-move)
  target_compile_definitions(zantrel_options INTERFACE _WIN32_WINNT=0x0601 UNICODE _UNICODE)
  target_link_options(zantrel_options INTERFACE -static)
endif()
