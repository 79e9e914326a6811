# 32-bit ARM, soft float, as on the device: ARMv5TE, in Thumb code, which is a quarter smaller.
# Libraries are Debian's armel; the programs run here under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabi)
set(CMAKE_C_COMPILER arm-linux-gnueabi-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(CMAKE_C_FLAGS_INIT -mthumb)
set(CMAKE_CXX_FLAGS_INIT -mthumb)
set(CMAKE_STRIP arm-linux-gnueabi-strip)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/arm-linux-gnueabi/pkgconfig:/usr/share/pkgconfig)
# Without this, readdir finds nothing under qemu.
add_compile_definitions(_FILE_OFFSET_BITS=64)
