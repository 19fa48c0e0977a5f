# 32-bit ARM, hard-float ABI (Debian armhf: ARMv7-A, Thumb-2, VFPv3-D16).
set(CMAKE_SYSTEM_PROCESSOR arm)
set(VEK_CROSS_TRIPLE arm-linux-gnueabihf)
set(VEK_CROSS_QEMU qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
