set(architecture s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
# Programs that are linked dynamically abort in QEMU 7.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(pkgcfg_lib_libdeflate_deflate /usr/lib/s390x-linux-gnu/libdeflate.a CACHE FILEPATH "")
