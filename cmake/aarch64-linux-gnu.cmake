# The distribution's cross compiler for AArch64, the libraries of a root of that architecture, and
# the emulator that runs what was built. scripts/cross-root makes that root.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(TARNKIT_CROSS_ROOT "${CMAKE_CURRENT_LIST_DIR}/../build/arm64-root" CACHE PATH
    "Where the libraries of the other architecture lie")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNKIT_CROSS_ROOT)
cmake_path(NORMAL_PATH TARNKIT_CROSS_ROOT)
set(CMAKE_SYSROOT "${TARNKIT_CROSS_ROOT}")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L "${TARNKIT_CROSS_ROOT}")

# Programs are this machine's; everything that goes into what is built comes from the root.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${TARNKIT_CROSS_ROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${TARNKIT_CROSS_ROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${TARNKIT_CROSS_ROOT}/usr/share/pkgconfig")
