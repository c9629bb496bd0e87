// JSON on standard output, one value a line.
#pragma once

#include "cli/terminal/Console.h"
#include "scene/JsonWriter.h"

namespace vrn::cli {

using JsonLine = vor::velmo_sdk::impl::JsonWriter<vor::velmo_sdk::impl::JsonBlocks>;

// Prints one line: `write` is called with a JsonLine to write one value.
template <class Write> void printJsonLine(Write write) {
    const vor::TextSink sink = print;
    JsonLine json(sink);
    write(json);
    json.stream().Put('\n');
    json.stream().Flush();
}

} // namespace vrn::cli
