// Any sequence of operations on a scene preserves its invariants.
#include "tests/fuzz/Editor.h"

using namespace vrn::fuzz;

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Editor(Bytes(asText(data, size))).run();
    return 0;
}
