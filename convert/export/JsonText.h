// JSON text as it is written, member by member.
#pragma once

#include "scene/RapidJson.h"
#include "scene/core/NumberText.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <span>

namespace vrn::convert {

class JsonText {
public:
    JsonText() : writer_(buffer_) {}

    JsonText& key(const char* name) {
        writer_.Key(name);
        return *this;
    }
    void object(auto members) {
        writer_.StartObject();
        members();
        writer_.EndObject();
    }
    void array(auto items) {
        writer_.StartArray();
        items();
        writer_.EndArray();
    }
    void text(std::string_view text) { vor::velmo_sdk::impl::writeJsonText(writer_, vor::String(text)); }
    void integer(vor::u64 number) { writer_.Uint64(number); }
    void boolean(bool value) { writer_.Bool(value); }
    void real(double number) {
        char buffer[vor::realTextCapacity];
        const std::string_view digits = vor::writeReal(number, buffer);
        writer_.RawValue(digits.data(), digits.size(), rapidjson::kNumberType);
    }
    void reals(std::span<const double> numbers) {
        array([&] {
            for (const double number : numbers)
                real(number);
        });
    }
    void integers(std::span<const vor::u32> numbers) {
        array([&] {
            for (const vor::u32 number : numbers)
                integer(number);
        });
    }

    [[nodiscard]] std::string_view view() const { return {buffer_.GetString(), buffer_.GetSize()}; }

private:
    using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, vor::velmo_sdk::impl::JsonAllocator>;
    using Writer = rapidjson::Writer<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>, vor::velmo_sdk::impl::JsonAllocator>;
    Buffer buffer_;
    Writer writer_;
};

} // namespace vrn::convert
