# Shared by the toolchain files: Debian's cross compiler for VEK_CROSS_TRIPLE
# (package g++-<triple>) and its sysroot, and qemu-user to run what it builds on the
# build machine. VEK_CROSS_TRIPLE and VEK_CROSS_QEMU are set by the including file.
set(CMAKE_SYSTEM_NAME Linux)

set(CMAKE_C_COMPILER ${VEK_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${VEK_CROSS_TRIPLE}-g++)

# Libraries and headers only from the target's sysroot, programs from the host.
set(VEK_CROSS_SYSROOT /usr/${VEK_CROSS_TRIPLE})
set(CMAKE_FIND_ROOT_PATH ${VEK_CROSS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Binaries stay dynamically linked, as on the device (where the real audio settings
# library is a shared object); qemu finds the target's loader and libc through -L.
# An absolute path: the integration tests exec the emulator themselves.
find_program(VEK_CROSS_QEMU_PATH ${VEK_CROSS_QEMU})
if(VEK_CROSS_QEMU_PATH)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VEK_CROSS_QEMU_PATH} -L ${VEK_CROSS_SYSROOT})
endif()
