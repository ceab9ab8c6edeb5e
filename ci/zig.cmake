# Cross-compiles for macOS with Zig's clang, which brings the C headers, libc++ and the system's stubs along.
# Expects the folder that ci/mac has prepared in MOBILSTEG_ZIG, and MOBILSTEG_ZIG_ARCH: aarch64 or x86_64.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${MOBILSTEG_ZIG_ARCH})
# For the compiler checks, which run in projects of their own.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MOBILSTEG_ZIG MOBILSTEG_ZIG_ARCH)

set(CMAKE_C_COMPILER ${MOBILSTEG_ZIG}/werkzeug/cc-${MOBILSTEG_ZIG_ARCH})
set(CMAKE_CXX_COMPILER ${MOBILSTEG_ZIG}/werkzeug/c++-${MOBILSTEG_ZIG_ARCH})
set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
set(CMAKE_AR ${MOBILSTEG_ZIG}/werkzeug/ar)
set(CMAKE_RANLIB ${MOBILSTEG_ZIG}/werkzeug/ranlib)
# There is none here, and nothing is installed.
set(CMAKE_INSTALL_NAME_TOOL ${MOBILSTEG_ZIG}/werkzeug/ranlib)

# Nothing of this machine's own, whose headers and libraries are Linux's.
set(CMAKE_FIND_ROOT_PATH ${MOBILSTEG_ZIG}/fremd)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
