#include "cli/query/ValueJson.h"

#include "scene/BufferNumbers.h"
#include "scene/Node.h"
#include "scene/core/NumberText.h"

#include <cmath>
#include <vector>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk;

namespace {

template <class Real> void writeShortest(JsonWriter& writer, Real number) {
    char buffer[realTextCapacity];
    const std::string_view text = writeReal(number, buffer);
    if (std::isfinite(number))
        writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
    else
        writer.String(text.data(), text.size());
}

template <class Number> void writeNumber(JsonWriter& writer, Number number) {
    if constexpr (std::is_floating_point_v<Number>)
        writeShortest(writer, number);
    else if constexpr (std::is_same_v<Number, bool>)
        writer.Bool(number);
    else if constexpr (std::is_signed_v<Number>)
        writer.Int64(number);
    else
        writer.Uint64(number);
}

template <class Number> void writeRow(JsonWriter& writer, std::span<const Number> numbers) {
    if (numbers.size() == 1)
        return writeNumber(writer, numbers.front());
    writer.StartArray();
    for (const Number number : numbers)
        writeNumber(writer, number);
    writer.EndArray();
}

// An input that has nothing below it.
void writeLeaf(JsonWriter& writer, const Input& input) {
    const AttrData& value = input.value();
    switch (input.type()) {
    case AttrType::Null:
        return input.connection() ? impl::writeJsonText(writer, input.connection()->label()) : void(writer.Null());
    case AttrType::Bool:
        return void(writer.Bool(value.asBool()));
    case AttrType::Int:
        return void(writer.Int64(value.asInt()));
    case AttrType::UInt:
        return void(writer.Uint64(value.asUInt()));
    case AttrType::String:
        return impl::writeJsonText(writer, value.asString());
    case AttrType::Node:
        return input.nodeValue() ? impl::writeJsonText(writer, input.nodeValue()->name()) : void(writer.Null());
    case AttrType::Buffer:
        return writeJsonElements(writer, value, 0, value.count());
    case AttrType::Real:
    case AttrType::Vec2:
    case AttrType::Vec3:
    case AttrType::Vec4:
    case AttrType::Pos2:
    case AttrType::Pos3:
    case AttrType::Quat:
    case AttrType::Rgba:
    case AttrType::Mat3:
    case AttrType::Mat4:
        return writeRow(writer, value.components());
    case AttrType::Array:
    case AttrType::Object: // have no value but what is below them
        return writeRow(writer, value.components());
    }
}

// Objects and arrays that are being written: inputs may be nested too deep for recursion.
class Nest {
public:
    explicit Nest(JsonWriter& writer) : writer_(writer) {}

    void enter(std::span<const Input* const> children, bool isObject) {
        isObject ? writer_.StartObject() : writer_.StartArray();
        open_.push_back({children, isObject});
    }

    void write(const Input& input) {
        const bool isObject = input.type() == AttrType::Object;
        if (isObject || input.type() == AttrType::Array)
            enter(input.children(), isObject);
        else
            writeLeaf(writer_, input);
    }

    void finish() {
        while (!open_.empty()) {
            Open& top = open_.back();
            if (top.left.empty()) {
                top.isObject ? writer_.EndObject() : writer_.EndArray();
                open_.pop_back();
                continue;
            }
            const Input& input = *top.left.front();
            top.left = top.left.subspan(1);
            if (top.isObject)
                impl::writeJsonText(writer_, input.name());
            write(input);
        }
    }

private:
    struct Open {
        std::span<const Input* const> left;
        bool isObject;
    };

    JsonWriter& writer_;
    std::vector<Open> open_;
};

} // namespace

void writeJsonReal(JsonWriter& writer, double number) { writeShortest(writer, number); }

void writeJsonReal(JsonWriter& writer, float number) { writeShortest(writer, number); }

void writeJsonElements(JsonWriter& writer, const AttrData& buffer, u64 first, u64 count) {
    const u64 components = elementLayout(buffer.dataType()).components;
    writer.StartArray();
    visitNumbers(buffer, [&](auto numbers) {
        for (u64 i = first; i < first + count; ++i)
            writeRow(writer, numbers.subspan(i * components, components));
    });
    writer.EndArray();
}

void writeJsonElement(JsonWriter& writer, const AttrData& buffer, u64 index) {
    const u64 components = elementLayout(buffer.dataType()).components;
    visitNumbers(buffer, [&](auto numbers) { writeRow(writer, numbers.subspan(index * components, components)); });
}

void writeJsonObject(JsonWriter& writer, std::span<const Input* const> members) {
    Nest nest(writer);
    nest.enter(members, true);
    nest.finish();
}

void writeJsonArray(JsonWriter& writer, std::span<const Input* const> elements) {
    Nest nest(writer);
    nest.enter(elements, false);
    nest.finish();
}

void writeJsonValue(JsonWriter& writer, const Input& input) {
    Nest nest(writer);
    nest.write(input);
    nest.finish();
}

} // namespace vrn::cli
