# libvrn.so, from the objects of the static library. It exports only what is marked VRN_API; the version script hides
# instantiations of standard library templates, which have default visibility.
add_library(vrn_shared SHARED $<TARGET_OBJECTS:vrn_base> $<TARGET_OBJECTS:vrn>)
# While the major version is 0, each minor version may change the interface, so it is part of the SONAME.
set_target_properties(vrn_shared PROPERTIES
  OUTPUT_NAME vrn VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
  LINKER_LANGUAGE CXX LINK_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/symbols.map)
target_compile_features(vrn_shared PUBLIC cxx_std_20)
target_include_directories(vrn_shared PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
target_link_libraries(vrn_shared PRIVATE PkgConfig::libdeflate)
target_link_options(vrn_shared PRIVATE -Wl,--version-script=${CMAKE_CURRENT_LIST_DIR}/symbols.map)
