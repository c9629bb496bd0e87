// JSON on standard output, one value a line.
#pragma once

#include "cli/terminal/Console.h"
#include "scene/RapidJson.h"

#include <rapidjson/writer.h>
#include <string>
#include <string_view>

namespace vrn::cli {

// Gathers characters and prints them in blocks.
class ConsoleStream {
public:
    using Ch = char;

    void Put(char c) {
        block_.push_back(c);
        if (block_.size() >= blockSize)
            Flush();
    }
    void Flush() {
        print(block_);
        block_.clear();
    }

private:
    static constexpr std::size_t blockSize = std::size_t(64) * 1024;
    std::string block_;
};

using JsonWriter =
    rapidjson::Writer<ConsoleStream, rapidjson::UTF8<>, rapidjson::UTF8<>, vor::velmo_sdk::impl::JsonAllocator>;

// One line: `write` is called with the writer to put one value there.
template <class Write> void printJsonLine(Write write) {
    ConsoleStream stream;
    JsonWriter writer(stream);
    write(writer);
    stream.Put('\n');
    stream.Flush();
}

inline void writeJsonMember(JsonWriter& writer, const char* key, std::string_view text) {
    writer.Key(key);
    vor::velmo_sdk::impl::writeJsonText(writer, text);
}

} // namespace vrn::cli
