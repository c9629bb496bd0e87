// JSON, one value a line.
//
//     writeJsonLine(sink, [&](JsonLine& json) { json.object([&] { json.key("name").text(name); }); });
#pragma once

#include "scene/JsonWriter.h"

namespace vrn::inspect {

using JsonLine = vor::velmo_sdk::impl::JsonWriter<vor::velmo_sdk::impl::JsonBlocks>;

// Writes one line: `write` is called with a JsonLine to write one value. The sink receives it in blocks; what it throws
// propagates.
template <class Write> void writeJsonLine(const vor::TextSink& sink, Write write) {
    JsonLine json(sink);
    write(json);
    json.stream().Put('\n');
    json.stream().Flush();
}

} // namespace vrn::inspect
