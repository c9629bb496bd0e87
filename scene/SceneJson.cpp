#include "scene/SceneJson.h"

#include "scene/BufferNumbers.h"
#include "scene/InputCursor.h"
#include "scene/JsonWriter.h"

namespace vor::velmo_sdk::impl {

namespace {

template <class Json> class SceneWriter {
public:
    SceneWriter(Json& json, const SceneJsonOptions& options) : json_(json), options_(options) {}

    void write(const Scene& scene) {
        json_.object([&] {
            json_.key("version").integer(scene.fileVersion());
            json_.key("time").text(scene.fileTime());
            json_.key("comments").array([&] {
                for (const String& comment : scene.fileComments())
                    json_.text(comment);
            });
            json_.key("nodes").array([&] {
                for (const Node& node : scene.nodes())
                    write(node);
            });
        });
    }

private:
    void write(const Node& node) {
        json_.object([&] {
            json_.key("name").text(node.name());
            json_.key("type").text(node.type());
            if (node.isDefinition())
                json_.key("definition").boolean(true);
            json_.key("inputs").array([&] { writeAll(node.inputs()); });
        });
    }

    void writeAll(std::span<const Input* const> inputs) {
        for (InputCursor cursor(inputs); !cursor.isDone();) {
            if (cursor.isAtEnd()) {
                cursor.leave();
                end(*cursor);
                cursor.next();
            } else {
                begin(*cursor);
                cursor.enter();
            }
        }
    }

    void begin(const Input& input) {
        json_.beginObject();
        if (!input.isElement())
            json_.key("name").text(input.name());
        json_.key("type").text(input.typeName());
        writeValue(input);
    }

    void end(const Input& input) {
        if (input.type() == AttrType::Array || input.type() == AttrType::Object)
            json_.endArray();
        if (const Output* source = input.connection())
            json_.key("connection").text(source->label());
        json_.endObject();
    }

    void writeValue(const Input& input) {
        const AttrData& value = input.value();
        switch (valueKind(input.type())) {
        case ValueKind::Null:
            return;
        case ValueKind::Bool:
            return json_.key("value").boolean(value.asBool());
        case ValueKind::Int:
            return json_.key("value").number(value.asInt());
        case ValueKind::UInt:
            return json_.key("value").number(value.asUInt());
        case ValueKind::Real:
            return json_.key("value").number(value.asReal());
        case ValueKind::String:
            return json_.key("value").text(value.asString());
        case ValueKind::Node:
            json_.key("value");
            return input.nodeValue() ? json_.text(input.nodeValue()->name()) : json_.null();
        case ValueKind::Buffer:
            return writeBuffer(value);
        case ValueKind::Array:
            json_.key("elementType").text(attrTypeName(input.elementType()));
            json_.key("elements").beginArray();
            return;
        case ValueKind::Object:
            json_.key("members").beginArray();
            return;
        case ValueKind::Components:
            json_.key("value").numbers(value.components());
        }
    }

    void writeBuffer(const AttrData& value) {
        json_.key("dataType").text(dataTypeName(value.dataType()));
        json_.key("count").integer(value.count());
        if (!options_.hasBufferData)
            return;
        json_.key("data").row([&] {
            visitNumbers(value, [&](auto numbers) {
                for (const auto number : numbers)
                    json_.number(number);
            });
        });
    }

    Json& json_;
    const SceneJsonOptions& options_;
};

template <template <class> class Layout>
void writeWith(const Scene& scene, const SceneJsonOptions& options, const TextSink& sink) {
    JsonWriter<JsonBlocks, Layout> json(sink);
    SceneWriter(json, options).write(scene);
    json.stream().Put('\n');
    json.stream().Flush();
}

} // namespace

void writeSceneJson(const Scene& scene, const SceneJsonOptions& options, const TextSink& sink) {
    if (options.isCompact)
        writeWith<CompactJson>(scene, options, sink);
    else
        writeWith<IndentedJson>(scene, options, sink);
}

} // namespace vor::velmo_sdk::impl
