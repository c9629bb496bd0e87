# Finds vrn::reader: the shared library where BUILD_SHARED_LIBS asks for it, otherwise the static one, which needs
# libdeflate to be linked.
if(BUILD_SHARED_LIBS)
  include(${CMAKE_CURRENT_LIST_DIR}/vrn-shared.cmake)
  return()
endif()

include(CMakeFindDependencyMacro)
find_dependency(PkgConfig)
pkg_check_modules(libdeflate QUIET IMPORTED_TARGET libdeflate)
if(NOT libdeflate_FOUND)
  set(vrn_FOUND FALSE)
  set(vrn_NOT_FOUND_MESSAGE "its static library needs libdeflate, which pkg-config does not find")
  return()
endif()
include(${CMAKE_CURRENT_LIST_DIR}/vrn-static.cmake)
