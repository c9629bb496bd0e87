# Cross-compiles with Debian's compiler for `architecture` and runs the programs with QEMU. Included by the toolchains.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${architecture})
set(CMAKE_C_COMPILER ${architecture}-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER ${architecture}-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${architecture};-L;/usr/${architecture}-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${architecture}-linux-gnu/pkgconfig)
