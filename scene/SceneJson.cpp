#include "scene/SceneJson.h"

#include "scene/BufferNumbers.h"
#include "scene/RapidJson.h"
#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <cmath>
#include <rapidjson/prettywriter.h>
#include <vector>

namespace vor::velmo_sdk::impl {

// The output stream of the JSON writers, in their words.
class BlockStream : public TextBlock {
public:
    using Ch = char;
    using TextBlock::TextBlock;
    void Put(char c) { append(c); }
    void Flush() { flush(); }
};

} // namespace vor::velmo_sdk::impl

namespace rapidjson {

// Writes the indentation of a line. It stops growing at some depth: inputs may be nested so deep that
// the spaces would outgrow everything else.
template <> inline void PutN(vor::velmo_sdk::impl::BlockStream& stream, char c, std::size_t count) {
    stream.append(std::min<std::size_t>(count, 64), c);
}

} // namespace rapidjson

namespace vor::velmo_sdk::impl {

namespace {

using CompactWriter = rapidjson::Writer<BlockStream, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator>;
using IndentedWriter = rapidjson::PrettyWriter<BlockStream, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator>;

// Arrays of numbers stand on one line, all others on a line an item.
void setOneLineArrays(CompactWriter&, bool) {}
void setOneLineArrays(IndentedWriter& writer, bool isOneLine) {
    writer.SetFormatOptions(isOneLine ? rapidjson::kFormatSingleLineArray : rapidjson::kFormatDefault);
}

template <class Writer> class SceneWriter {
public:
    SceneWriter(Writer& writer, const SceneJsonOptions& options) : writer_(writer), options_(options) {}

    void write(const Scene& scene) {
        writer_.StartObject();
        key("version");
        writer_.Uint64(scene.fileVersion());
        key("time");
        text(scene.fileTime());
        key("comments");
        writer_.StartArray();
        for (const String& comment : scene.fileComments())
            text(comment);
        writer_.EndArray();
        key("nodes");
        writer_.StartArray();
        for (const Node& node : scene.nodes())
            write(node);
        writer_.EndArray();
        writer_.EndObject();
    }

private:
    // An input whose children are being written; inputs may be nested too deep for recursion.
    struct Open {
        const Input* input; // null for the node itself
        std::span<const Input* const> left;
    };

    void write(const Node& node) {
        writer_.StartObject();
        key("name");
        text(node.name());
        key("type");
        text(node.type());
        if (node.isDefinition()) {
            key("definition");
            writer_.Bool(true);
        }
        key("inputs");
        writer_.StartArray();
        writeAll(node.inputs());
        writer_.EndArray();
        writer_.EndObject();
    }

    void writeAll(std::span<const Input* const> inputs) {
        std::vector<Open> open{{nullptr, inputs}};
        while (true) {
            Open& top = open.back();
            if (!top.left.empty()) {
                const Input* input = top.left.front();
                top.left = top.left.subspan(1);
                begin(*input);
                open.push_back({input, input->children()});
            } else if (top.input) {
                end(*top.input);
                open.pop_back();
            } else {
                return;
            }
        }
    }

    void begin(const Input& input) {
        writer_.StartObject();
        if (!input.isElement()) {
            key("name");
            text(input.name());
        }
        key("type");
        text(input.typeName());
        writeValue(input);
    }

    void end(const Input& input) {
        if (input.type() == AttrType::Array || input.type() == AttrType::Object)
            writer_.EndArray();
        if (const Output* source = input.connection()) {
            key("connection");
            text(source->label());
        }
        writer_.EndObject();
    }

    void writeValue(const Input& input) {
        const AttrData& value = input.value();
        switch (input.type()) {
        case AttrType::Null:
            return;
        case AttrType::Bool:
            key("value");
            writer_.Bool(value.asBool());
            return;
        case AttrType::Int:
            key("value");
            writer_.Int64(value.asInt());
            return;
        case AttrType::UInt:
            key("value");
            writer_.Uint64(value.asUInt());
            return;
        case AttrType::Real:
            key("value");
            real(value.asReal());
            return;
        case AttrType::String:
            key("value");
            text(value.asString());
            return;
        case AttrType::Node:
            key("value");
            input.nodeValue() ? text(input.nodeValue()->name()) : void(writer_.Null());
            return;
        case AttrType::Buffer:
            writeBuffer(value);
            return;
        case AttrType::Array:
            key("elementType");
            text(attrTypeName(input.elementType()));
            key("elements");
            writer_.StartArray();
            return;
        case AttrType::Object:
            key("members");
            writer_.StartArray();
            return;
        case AttrType::Vec2:
        case AttrType::Vec3:
        case AttrType::Vec4:
        case AttrType::Pos2:
        case AttrType::Pos3:
        case AttrType::Quat:
        case AttrType::Rgba:
        case AttrType::Mat3:
        case AttrType::Mat4:
            key("value");
            numbers([&] { list(value.components()); });
            return;
        }
    }

    void writeBuffer(const AttrData& value) {
        key("dataType");
        text(dataTypeName(value.dataType()));
        key("count");
        writer_.Uint64(value.count());
        if (!options_.hasBufferData)
            return;
        key("data");
        numbers([&] { visitNumbers(value, [&](auto elements) { list(elements); }); });
    }

    template <class Write> void numbers(Write write) {
        setOneLineArrays(writer_, true);
        writer_.StartArray();
        write();
        writer_.EndArray();
        setOneLineArrays(writer_, false);
    }

    template <class T> void number(T value) {
        if constexpr (std::is_floating_point_v<T>)
            real(value);
        else if constexpr (std::is_signed_v<T>)
            writer_.Int64(value);
        else
            writer_.Uint64(value);
    }

    template <class T> void list(std::span<const T> values) {
        for (const T value : values)
            number(value);
    }

    void key(const char* name) { writer_.Key(name); }

    void text(const String& text) { writeJsonText(writer_, text); }

    template <class Real> void real(Real value) {
        char buffer[realTextCapacity];
        const std::string_view number = writeReal(value, buffer);
        if (std::isfinite(value))
            writer_.RawValue(number.data(), number.size(), rapidjson::kNumberType);
        else
            writer_.String(number.data(), number.size());
    }

    Writer& writer_;
    const SceneJsonOptions& options_;
};

template <class Writer> void writeWith(Writer& writer, const Scene& scene, const SceneJsonOptions& options) {
    SceneWriter<Writer>(writer, options).write(scene);
}

} // namespace

void writeSceneJson(const Scene& scene, const SceneJsonOptions& options, const TextSink& sink) {
    BlockStream stream(sink);
    if (options.isCompact) {
        CompactWriter writer(stream);
        writeWith(writer, scene, options);
    } else {
        IndentedWriter writer(stream);
        writer.SetIndent(' ', 2);
        writeWith(writer, scene, options);
    }
    stream.Put('\n');
    stream.Flush();
}

} // namespace vor::velmo_sdk::impl
