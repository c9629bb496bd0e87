#include "cli/query/ValueJson.h"

#include "scene/BufferNumbers.h"
#include "scene/Node.h"

#include <vector>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk;

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
    switch (input.type()) {
    case AttrType::Null:
        return input.connection() ? json.text(input.connection()->label()) : json.null();
    case AttrType::Bool:
        return json.boolean(value.asBool());
    case AttrType::Int:
        return json.number(value.asInt());
    case AttrType::UInt:
        return json.number(value.asUInt());
    case AttrType::String:
        return json.text(value.asString());
    case AttrType::Node:
        return input.nodeValue() ? json.text(input.nodeValue()->name()) : json.null();
    case AttrType::Buffer:
        return writeJsonElements(json, value, 0, value.count());
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
    case AttrType::Array:
    case AttrType::Object: // have no components; their children are written elsewhere
        return writeElement(json, value.components());
    }
}

// Writes nested objects and arrays. Keeps a stack of the open ones, because inputs can be nested too deep for
// recursion.
class NestedWriter {
public:
    explicit NestedWriter(JsonLine& json) : json_(json) {}

    void enter(std::span<const Input* const> children, bool isObject) {
        isObject ? json_.beginObject() : json_.beginArray();
        open_.push_back({children, isObject});
    }

    void write(const Input& input) {
        const bool isObject = input.type() == AttrType::Object;
        if (isObject || input.type() == AttrType::Array)
            enter(input.children(), isObject);
        else
            writeLeaf(json_, input);
    }

    void finish() {
        while (!open_.empty()) {
            Open& top = open_.back();
            if (top.remaining.empty()) {
                top.isObject ? json_.endObject() : json_.endArray();
                open_.pop_back();
                continue;
            }
            const Input& input = *top.remaining.front();
            top.remaining = top.remaining.subspan(1);
            if (top.isObject)
                json_.key(input.name());
            write(input);
        }
    }

private:
    struct Open {
        std::span<const Input* const> remaining;
        bool isObject;
    };

    JsonLine& json_;
    std::vector<Open> open_;
};

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
    NestedWriter nested(json);
    nested.enter(members, true);
    nested.finish();
}

void writeJsonArray(JsonLine& json, std::span<const Input* const> elements) {
    NestedWriter nested(json);
    nested.enter(elements, false);
    nested.finish();
}

void writeJsonValue(JsonLine& json, const Input& input) {
    NestedWriter nested(json);
    nested.write(input);
    nested.finish();
}

} // namespace vrn::cli
