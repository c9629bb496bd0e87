set(architecture aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
