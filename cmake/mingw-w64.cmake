# Toolchain: 64-bit Windows, built with MinGW-w64 (POSIX threads), run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Programs run in a Wine prefix of the build folder, never in the user's own.
find_program(ZANTREL_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(ZANTREL_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR
    ${CMAKE_COMMAND} -E env WINEDEBUG=-all WINEPREFIX=${CMAKE_BINARY_DIR}/wine ${ZANTREL_WINE})
endif()
