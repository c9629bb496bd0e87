# Cross-compiles for s390x with Debian's compiler and runs the programs with QEMU.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_C_COMPILER s390x-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER s390x-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x;-L;/usr/s390x-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/s390x-linux-gnu/pkgconfig)
# Programs that are linked dynamically abort in QEMU 7.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(pkgcfg_lib_libdeflate_deflate /usr/lib/s390x-linux-gnu/libdeflate.a CACHE FILEPATH "")
