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
# library is a shared object). qemu runs them with Debian's own libraries of the target
# where they are installed (multiarch, as the packages need: libstdc++6:armhf and the
# like), as on the device; otherwise with the sysroot's, found through -L. Never a mix:
# the sysroot's loader would read this machine's ld.so.cache, which lists the multiarch
# ones, and crash on their libc.
# An absolute path: the integration tests exec the emulator themselves.
find_program(VEK_CROSS_QEMU_PATH ${VEK_CROSS_QEMU})
if(VEK_CROSS_QEMU_PATH AND EXISTS /lib/${VEK_CROSS_TRIPLE}/libc.so.6)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VEK_CROSS_QEMU_PATH})
elseif(VEK_CROSS_QEMU_PATH)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VEK_CROSS_QEMU_PATH} -L ${VEK_CROSS_SYSROOT})
endif()
