# Cross toolchain: Debian's MinGW-w64 with POSIX threads; what it builds runs under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# scripts/build-opencv.sh names the directory of the static libraries that it makes.
set(CMAKE_PREFIX_PATH "$ENV{QOROCV460_WINDOWS_PREFIX}")
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "$ENV{QOROCV460_WINDOWS_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
# The compiler keeps no 32-byte alignment of the stack here, and moves vectors to it as if it did.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
# Self-contained: nothing of the compiler's own run-time is looked for beside what it builds.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
