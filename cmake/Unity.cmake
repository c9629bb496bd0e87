# Unity builds compile several source files as one, so that their headers are parsed once: the converter, the command
# and the tests always, the library in all presets but `release` and `debug` (CMAKE_UNITY_BUILD). scripts/lint checks
# that each source compiles alone. These are left out: they define a name that a neighbour defines, too.
set(not_in_unity_builds
  cli/shell/CompletionFish.cpp
  cli/shell/CompletionZsh.cpp
  cli/shell/ManualPage.cpp
  impl/Formatter.cpp
  impl/numbers/PlainBlocks.cpp
  impl/numbers/PlainBlocks128.cpp
  impl/numbers/PlainBlocksAvx2.cpp
  impl/numbers/PlainBlocksAvx512.cpp
  scene/DataType.cpp
  scene/core/FloatDecimals128.cpp
  scene/core/FloatDecimalsAvx2.cpp
  scene/core/NumberLists.cpp
  scene/core/NumberLists128.cpp
  scene/core/NumberListsAvx512.cpp
  tests/faults/MemoryTest.cpp)
list(TRANSFORM not_in_unity_builds PREPEND ${PROJECT_SOURCE_DIR}/)
# A property of a source file holds in the folder that sets it: tests/ includes this file again.
set_source_files_properties(${not_in_unity_builds} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
# GCC warns of members of an anonymous namespace in any file but the one that it was called with.
add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
