# Installation: headers, both libraries, their CMake and pkg-config packages, and the command with its manual pages and
# completions.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Headers keep their folders, below include/vrn: `#include <vrn/vrn.h>`.
set(installed_headers
  impl/Edit.h
  impl/Formatter.h
  impl/Reader.h
  impl/SourceMap.h
  scene/AttrData.h
  scene/AttrType.h
  scene/Catalogue.h
  scene/CatalogueJson.h
  scene/DataType.h
  scene/Handle.h
  scene/Input.h
  scene/InputCursor.h
  scene/Interfaces.h
  scene/NameMaps.h
  scene/NamedList.h
  scene/Node.h
  scene/Output.h
  scene/Pooled.h
  scene/Scene.h
  scene/SceneJson.h
  scene/VrnWriter.h
  scene/Walk.h
  scene/core/Export.h
  scene/core/File.h
  scene/core/Hash.h
  scene/core/HashMap.h
  scene/core/Log.h
  scene/core/Math.h
  scene/core/NumberText.h
  scene/core/String.h
  scene/core/TextEncoding.h
  scene/core/TextSink.h
  scene/core/Types.h
  scene/core/Vector.h)
if(TARGET vrn_convert)
  list(APPEND installed_headers
    convert/Convert.h
    convert/export/WriteOptions.h
    convert/scenes/ImageFiles.h
    convert/scenes/Placement.h
    convert/import/ReadOptions.h
    convert/scenes/SceneMerge.h
    convert/shared/Errors.h
    convert/shared/Extension.h
    convert/shared/Losses.h
    convert/shared/ReadListener.h
    convert/shared/SceneNames.h
    convert/shared/TexturePaths.h
    convert/shared/Transform.h
    convert/shared/UniqueNames.h)
endif()
foreach(header ${installed_headers})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vrn/${folder})
endforeach()
install(FILES include/vrn/vrn.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vrn)

# Both export the target vrn::reader; vrn-config.cmake includes one of the two files.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vrn)
set(header_folders ${CMAKE_INSTALL_INCLUDEDIR} ${CMAKE_INSTALL_INCLUDEDIR}/vrn)
set_target_properties(vrn vrn_shared PROPERTIES EXPORT_NAME reader)
install(TARGETS vrn EXPORT vrn-static ARCHIVE INCLUDES DESTINATION ${header_folders})
install(TARGETS vrn_shared EXPORT vrn-shared LIBRARY INCLUDES DESTINATION ${header_folders})
install(EXPORT vrn-static NAMESPACE vrn:: DESTINATION ${package_folder})
install(EXPORT vrn-shared NAMESPACE vrn:: DESTINATION ${package_folder})

# vrn::convert, a component: it uses parts of the library that the shared one does not export.
if(TARGET vrn_convert)
  set_target_properties(vrn_convert PROPERTIES EXPORT_NAME convert)
  install(TARGETS vrn_convert EXPORT vrn-convert ARCHIVE INCLUDES DESTINATION ${header_folders})
  install(EXPORT vrn-convert NAMESPACE vrn:: DESTINATION ${package_folder})
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vrn-config-version.cmake COMPATIBILITY SameMinorVersion)
configure_file(cmake/vrn-config.cmake.in ${PROJECT_BINARY_DIR}/vrn-config.cmake @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vrn-config.cmake ${PROJECT_BINARY_DIR}/vrn-config-version.cmake
  DESTINATION ${package_folder})

# vrn.pc uses paths relative to its own folder, so that an installed tree can be moved.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE prefix_from_pkgconfig)
cmake_path(APPEND pkgconfig_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND pkgconfig_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/vrn.pc.in ${PROJECT_BINARY_DIR}/vrn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vrn.pc DESTINATION ${pkgconfig_folder})

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(EXISTS ${PROJECT_SOURCE_DIR}/catalogues)
  install(DIRECTORY catalogues/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vrn/catalogues FILES_MATCHING PATTERN *.json)
endif()

# The command generates its manual pages and completions.
add_custom_target(vrn_installed DEPENDS vrn vrn_shared $<TARGET_NAME_IF_EXISTS:vrn_convert>)
if(TARGET vrn_command)
  set(shell_files ${PROJECT_BINARY_DIR}/shell)
  add_custom_command(OUTPUT ${shell_files}/made
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${shell_files}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${shell_files}/man
    COMMAND vrn_command man --write ${shell_files}/man
    COMMAND vrn_command completion bash > ${shell_files}/vrn
    COMMAND vrn_command completion zsh > ${shell_files}/_vrn
    COMMAND vrn_command completion fish > ${shell_files}/vrn.fish
    COMMAND ${CMAKE_COMMAND} -E touch ${shell_files}/made
    DEPENDS vrn_command VERBATIM)
  add_custom_target(vrn_shell_files ALL DEPENDS ${shell_files}/made)
  add_dependencies(vrn_installed vrn_command vrn_shell_files)
  install(TARGETS vrn_command RUNTIME)
  install(DIRECTORY ${shell_files}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${shell_files}/vrn DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${shell_files}/_vrn DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${shell_files}/vrn.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
