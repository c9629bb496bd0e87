#include "inspect/path/Answer.h"

#include "inspect/value/ValueJson.h"
#include "inspect/value/ValueText.h"
#include "scene/BufferNumbers.h"
#include "scene/core/TextEncoding.h"

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

using Kind = PathMatch::Kind;

std::string indexText(u64 index) { return '[' + std::to_string(index) + ']'; }

class AnswerLines {
public:
    AnswerLines(const PathMatch& match, AnswerLayout layout, const TextSink& sink)
        : match_(match), isLabelled_(layout.isLabelled), isEscaped_(layout.isLabelled || layout.isEscaped),
          sink_(sink) {
        if (isLabelled_)
            label_ = escaped(match.input ? match.input->label() : match.node->name());
    }

    void write() {
        switch (match_.kind) {
        case Kind::Node:
        case Kind::NodeType:
            line(match_.kind == Kind::Node ? "" : ".type", escaped(match_.node->type()));
            break;
        case Kind::NodeName:
            line(".name", escaped(match_.node->name()));
            break;
        case Kind::Count:
            line(".count", std::to_string(match_.count));
            break;
        case Kind::Slice:
        case Kind::BufferElement:
            elements(match_.first, match_.count);
            break;
        case Kind::Input:
            input(*match_.input);
        }
        sink_(text_);
    }

private:
    [[nodiscard]] std::string escaped(std::string_view text) const {
        return isEscaped_ ? std::string(escapeForTerminal(text).view()) : std::string(text);
    }

    void input(const Input& input) {
        if (input.type() == AttrType::Buffer)
            elements(0, input.value().count());
        else if (input.type() == AttrType::Array)
            elements(0, input.size());
        else
            line("", escaped(valueText(input)));
    }

    void elements(u64 first, u64 count) {
        if (match_.input->type() == AttrType::Array) {
            for (const Input* element : match_.input->children().subspan(first, count))
                line(indexText(element->index()), escaped(valueText(*element)));
            return;
        }
        const u64 components = elementLayout(match_.input->dataType()).components;
        visitNumbers(match_.input->value(), [&](auto numbers) {
            std::string element;
            for (u64 i = first; i < first + count; ++i) {
                element.clear();
                appendNumbers(element, numbers.subspan(i * components, components));
                line(isLabelled_ ? indexText(i) : std::string(), element);
            }
        });
    }

    void line(const std::string& step, const std::string& value) {
        constexpr std::size_t blockSize = std::size_t(64) * 1024;
        if (isLabelled_)
            text_ += label_ + step + '\t';
        text_ += value + '\n';
        if (text_.size() < blockSize)
            return;
        sink_(text_);
        text_.clear();
    }

    const PathMatch& match_;
    bool isLabelled_;
    bool isEscaped_;
    const TextSink& sink_;
    std::string label_;
    std::string text_;
};

void writeInput(JsonLine& json, const PathMatch& match) {
    const Input& input = *match.input;
    json.key("path").text(pathText(match));
    if (match.kind == Kind::Count) {
        json.key("type").text(attrTypeName(AttrType::UInt));
        return json.key("value").number(match.count);
    }
    if (match.kind == Kind::BufferElement) {
        json.key("type").text(dataTypeName(input.dataType()));
        return writeJsonElement(json.key("value"), input.value(), match.first);
    }
    json.key("type").text(attrTypeName(input.type()));
    if (input.type() == AttrType::Buffer)
        json.key("dataType").text(dataTypeName(input.dataType()));
    if (input.connection())
        json.key("connection").text(input.connection()->label());
    json.key("value");
    if (match.kind == Kind::Input)
        writeJsonValue(json, input);
    else if (input.type() == AttrType::Buffer)
        writeJsonElements(json, input.value(), match.first, match.count);
    else
        writeJsonArray(json, input.children().subspan(match.first, match.count));
}

void writeNode(JsonLine& json, const PathMatch& match) {
    const Node& node = *match.node;
    json.key("path").text(pathText(match));
    if (match.kind == Kind::Node) {
        json.key("type").text(node.type());
        return writeJsonObject(json.key("value"), node.inputs());
    }
    const bool isType = match.kind == Kind::NodeType;
    json.key("type").text("String");
    json.key("value").text(isType ? node.type() : node.name());
}

} // namespace

void writeAnswer(const PathMatch& match, AnswerLayout layout, const TextSink& sink) {
    AnswerLines(match, layout, sink).write();
}

void writeAnswerJson(const PathMatch& match, const TextSink& sink) {
    writeJsonLine(sink, [&](JsonLine& json) {
        json.object([&] { match.input ? writeInput(json, match) : writeNode(json, match); });
    });
}

} // namespace vrn::inspect
