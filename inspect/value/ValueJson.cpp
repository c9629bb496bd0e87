#include "inspect/value/ValueJson.h"

#include "scene/BufferNumbers.h"
#include "scene/InputCursor.h"
#include "scene/Node.h"

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;
using vor::velmo_sdk::impl::InputCursor;

namespace {

template <class Number> void writeNumber(JsonLine& json, Number number) {
    if constexpr (std::is_same_v<Number, bool>)
        json.boolean(number);
    else
        json.number(number);
}

template <class Number> void writeElement(JsonLine& json, std::span<const Number> numbers) {
    if (numbers.size() == 1)
        return writeNumber(json, numbers.front());
    json.array([&] {
        for (const Number number : numbers)
            writeNumber(json, number);
    });
}

// An input that is neither an object nor an array.
void writeLeaf(JsonLine& json, const Input& input) {
    const AttrData& value = input.value();
    switch (valueKind(input.type())) {
    case ValueKind::Null:
        return input.connection() ? json.text(input.connection()->label()) : json.null();
    case ValueKind::Bool:
        return json.boolean(value.asBool());
    case ValueKind::Int:
        return json.number(value.asInt());
    case ValueKind::UInt:
        return json.number(value.asUInt());
    case ValueKind::String:
        return json.text(value.asString());
    case ValueKind::Node:
        return input.nodeValue() ? json.text(input.nodeValue()->name()) : json.null();
    case ValueKind::Buffer:
        return writeJsonElements(json, value, 0, value.count());
    case ValueKind::Real:
    case ValueKind::Components:
    case ValueKind::Array:
    case ValueKind::Object: // have no components; their children are written elsewhere
        return writeElement(json, value.components());
    }
}

void begin(JsonLine& json, const Input& input) {
    if (input.type() == AttrType::Object)
        json.beginObject();
    else if (input.type() == AttrType::Array)
        json.beginArray();
    else
        writeLeaf(json, input);
}

void end(JsonLine& json, const Input& input) {
    if (input.type() == AttrType::Object)
        json.endObject();
    else if (input.type() == AttrType::Array)
        json.endArray();
}

void writeAll(JsonLine& json, std::span<const Input* const> inputs) {
    for (InputCursor cursor(inputs); !cursor.isDone();) {
        if (cursor.isAtEnd()) {
            cursor.leave();
            end(json, *cursor);
            cursor.next();
        } else {
            if (!cursor->isElement())
                json.key(cursor->name());
            begin(json, *cursor);
            cursor.enter();
        }
    }
}

} // namespace

void writeJsonElements(JsonLine& json, const AttrData& buffer, u64 first, u64 count) {
    const u64 components = elementLayout(buffer.dataType()).components;
    json.array([&] {
        visitNumbers(buffer, [&](auto numbers) {
            for (u64 i = first; i < first + count; ++i)
                writeElement(json, numbers.subspan(i * components, components));
        });
    });
}

void writeJsonElement(JsonLine& json, const AttrData& buffer, u64 index) {
    const u64 components = elementLayout(buffer.dataType()).components;
    visitNumbers(buffer, [&](auto numbers) { writeElement(json, numbers.subspan(index * components, components)); });
}

void writeJsonObject(JsonLine& json, std::span<const Input* const> members) {
    json.object([&] { writeAll(json, members); });
}

void writeJsonArray(JsonLine& json, std::span<const Input* const> elements) {
    json.array([&] { writeAll(json, elements); });
}

void writeJsonValue(JsonLine& json, const Input& input) {
    begin(json, input);
    writeAll(json, input.children());
    end(json, input);
}

} // namespace vrn::inspect
