// JSON put together so that its nesting is that of the code.
//
//     const std::string text = Json::object([&](Json& file) {
//         file.text("name", name);
//         file.object("position", [&](Json& position) { position.number("line", 1); });
//     });
#pragma once

#include "scene/RapidJson.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>

namespace vrn::cli {

class Json {
public:
    template <class Write> [[nodiscard]] static std::string object(Write write) {
        Json json;
        json.writer_.StartObject();
        write(json);
        json.writer_.EndObject();
        return {json.buffer_.GetString(), json.buffer_.GetSize()};
    }

    // The members of the object. A text may have any bytes.
    void text(const char* key, const vor::String& value) {
        writer_.Key(key);
        vor::velmo_sdk::impl::writeJsonText(writer_, value);
    }
    void number(const char* key, vor::i32 value) {
        writer_.Key(key);
        writer_.Int(value);
    }
    void boolean(const char* key, bool value) {
        writer_.Key(key);
        writer_.Bool(value);
    }
    template <class Write> void object(const char* key, Write write) { json(key, object(write)); }
    // `items` are JSON already, with commas between them.
    void list(const char* key, const std::string& items) { json(key, '[' + items + ']'); }

private:
    using Allocator = vor::velmo_sdk::impl::JsonAllocator;
    using Utf8 = rapidjson::UTF8<>;
    using Buffer = rapidjson::GenericStringBuffer<Utf8, Allocator>;

    Json() = default;
    void json(const char* key, const std::string& value) {
        writer_.Key(key);
        writer_.RawValue(value.data(), value.size(), rapidjson::kObjectType);
    }

    Buffer buffer_;
    rapidjson::Writer<Buffer, Utf8, Utf8, Allocator> writer_{buffer_};
};

} // namespace vrn::cli
