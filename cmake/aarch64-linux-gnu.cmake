# 64-bit ARM (Debian arm64).
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(VEK_CROSS_TRIPLE aarch64-linux-gnu)
set(VEK_CROSS_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
