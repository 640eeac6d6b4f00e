# Cross-compiles for 64-bit Windows with the Debian mingw-w64 toolchain
# (packages g++-mingw-w64-x86-64 and mingw-w64-tools).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TYLHART_MINGW_PREFIX x86_64-w64-mingw32)
# The posix threading flavour has the whole C++ thread library; its runtime
# is linked in statically, so the DLL needs nothing beside the system's.
find_program(CMAKE_CXX_COMPILER NAMES ${TYLHART_MINGW_PREFIX}-g++-posix ${TYLHART_MINGW_PREFIX}-g++ REQUIRED)
find_program(CMAKE_C_COMPILER NAMES ${TYLHART_MINGW_PREFIX}-gcc-posix ${TYLHART_MINGW_PREFIX}-gcc)
find_program(CMAKE_RC_COMPILER NAMES ${TYLHART_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TYLHART_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Tests built for Windows run under Wine.
find_program(CMAKE_CROSSCOMPILING_EMULATOR NAMES wine)
