#include "scene/VrnWriter.h"

#include "scene/InputCursor.h"
#include "scene/VrnInputs.h"
#include "scene/VrnLosses.h"
#include "scene/VrnValue.h"
#include "scene/core/OutputFile.h"
#include "scene/syntax/HeaderComment.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace vor::velmo_sdk::impl {

namespace {

bool isComment(std::string_view text) noexcept {
    return text.starts_with('#') && text.find_first_of("\n\r\xFF") == std::string_view::npos;
}

// Whether an input and everything below it equals the reader's copy of the definition's input. The copy has no links,
// nor what links create, because they are resolved at the end of the file.
bool isCopy(const Input& input, const Input& original) {
    const auto isSame = [](const Input& mine, const Input& others) {
        return mine.key() == others.key() && mine.value() == others.value() && mine.size() == others.size() &&
               !mine.connection() && mine.type() != AttrType::Node;
    };
    if (!isSame(input, original))
        return false;
    InputCursor others(original.children());
    for (InputCursor mine(input.children()); !mine.isDone();) {
        if (mine.isAtEnd()) {
            mine.leave();
            others.leave();
            mine.next();
            others.next();
        } else {
            if (!isSame(*mine, *others))
                return false;
            mine.enter();
            others.enter();
        }
    }
    return true;
}

// Whether statements can turn a copy of the definition's input into the input.
bool canReplace(const Input& input, const Input& original) {
    if (input.key() != original.key() || input.type() != original.type())
        return false;
    if (input.type() == AttrType::Buffer)
        return input.dataType() == original.dataType();
    if (input.type() != AttrType::Array)
        return true;
    // The copied array has an element type from the start, so all new elements have it.
    const AttrType type = input.elementType();
    const auto isOfType = [&](const Input* element) { return element->type() == type; };
    return type == original.elementType() &&
           (type == AttrType::Null || std::ranges::all_of(input.children(), isOfType));
}

// Whether the node can be written as created from the definition in its current state.
bool follows(const Node& node, const Node& definition) {
    const auto mine = node.inputs();
    const auto originals = definition.inputs();
    if (mine.size() < originals.size())
        return false;
    for (std::size_t i = 0; i < originals.size(); ++i)
        if (!canReplace(*mine[i], *originals[i]))
            return false;
    return true;
}

class SceneText {
public:
    SceneText(const Scene& scene, const VrnWriterOptions& options, const TextSink& sink)
        : scene_(scene), options_(options), text_(sink), inputs_(text_, options, losses_) {}

    std::vector<VrnLoss> write() {
        writeComments();
        findLateDefinitions();
        for (const Node& node : scene_.nodes())
            write(node);
        for (const Node& node : scene_.nodes())
            if (late_.contains(&node))
                block("with", node, nullptr);
        text_.flush();
        return std::move(losses_);
    }

private:
    // Writes the comments, and adds comments for a version or time that they do not state.
    void writeComments() {
        u64 version = VRX_FILE_VERSION_1;
        String time;
        for (const String& comment : scene_.fileComments()) {
            if (!isComment(comment.view())) {
                losses_.push_back({String(), losses::comment});
                continue;
            }
            const HeaderComment header = readHeaderComment(comment);
            if (header.kind == HeaderComment::Kind::Version)
                version = header.version;
            if (header.kind == HeaderComment::Kind::Time)
                time = header.time;
            writeComment(comment);
        }
        if (version != scene_.fileVersion())
            add(String("# version: ") + String(scene_.fileVersion()), losses::version);
        if (time != scene_.fileTime())
            addTime();
    }

    void addTime() {
        const String comment = String("# time: ") + scene_.fileTime();
        const HeaderComment header = readHeaderComment(comment);
        if (isComment(comment.view()) && header.kind == HeaderComment::Kind::Time && header.time == scene_.fileTime())
            add(comment, losses::time);
        else
            losses_.push_back({String(), losses::unwritableTime});
    }

    void add(const String& comment, const char* loss) {
        writeComment(comment);
        losses_.push_back({String(), loss});
    }

    void writeComment(const String& comment) {
        text_.append(comment.view());
        text_.append('\n');
        before_ = Before::Block;
    }

    // A node is created with copies of the inputs that the definition of its type has at that time. A definition is
    // late if the copies in a node do not match it, because either has changed, or if it cannot be written without
    // losses. The inputs of a late definition are written after all nodes.
    void findLateDefinitions() {
        std::unordered_set<const Node*> used;
        for (const Node& node : scene_.nodes()) {
            const Node* definition = definitionOf(node);
            const bool isFirst = definition && used.insert(definition).second;
            if (definition && (!follows(node, *definition) || (isFirst && hasLosses(*definition))))
                late_.insert(definition);
            if (node.isDefinition() && isWritable(node))
                made_.insert(&node);
        }
        made_.clear();
    }

    [[nodiscard]] bool hasLosses(const Node& node) const {
        const TextSink nowhere = [](std::string_view) {};
        TextBlock text(nowhere);
        std::vector<VrnLoss> losses;
        VrnInputs inputs(text, options_, losses);
        for (const Input* input : node.inputs())
            inputs.write(*input, false);
        return !losses.empty();
    }

    // The definition that the reader creates a node from: the one of its type, if it is already written.
    [[nodiscard]] const Node* definitionOf(const Node& node) const {
        const Node* definition = made_.empty() ? nullptr : scene_.findNode(node.type());
        return definition && made_.contains(definition) ? definition : nullptr;
    }

    void write(const Node& node) {
        const String type = node.type();
        if (!isWritable(node))
            return losses_.push_back({node.name(), losses::nodeName});
        if (node.isDefinition()) {
            made_.insert(&node);
            statement("define", node);
            if (!late_.contains(&node))
                block("with", node, nullptr);
            return;
        }
        const Node* definition = definitionOf(node);
        if (!block(type.view(), node, late_.contains(definition) ? nullptr : definition))
            statement(type.view(), node);
    }

    // Writes a node with the inputs that differ from those it is created with. Returns false, and writes nothing, if
    // all are equal.
    bool block(std::string_view type, const Node& node, const Node* definition) {
        const auto inputs = node.inputs();
        const auto originals = definition ? definition->inputs() : std::span<const Input* const>();
        const auto isMade = [&](std::size_t i) { return i < originals.size() && isCopy(*inputs[i], *originals[i]); };
        std::size_t i = 0;
        while (i < inputs.size() && isMade(i))
            ++i;
        if (i == inputs.size())
            return false;
        begin(Before::Block, type, node, ":\n");
        for (; i < inputs.size(); ++i)
            if (!isMade(i))
                inputs_.write(*inputs[i], i < originals.size());
        return true;
    }

    // Before a semicolon, the types `remove` and `define` would be read as keywords.
    void statement(std::string_view type, const Node& node) {
        const String word = type;
        const bool isKeyword =
            !node.isDefinition() && (word.compareNoCase("remove") == 0 || word.compareNoCase("define") == 0);
        begin(Before::Statement, type, node, isKeyword ? ":\n" : ";\n");
    }

    // Separates blocks by blank lines from what precedes and follows them.
    enum class Before { Nothing, Statement, Block };
    void begin(Before what, std::string_view type, const Node& node, std::string_view end) {
        if (before_ == Before::Block || (before_ == Before::Statement && what == Before::Block))
            text_.append('\n');
        text_.append(type);
        text_.append(' ');
        text_.append(node.key().view());
        text_.append(end);
        before_ = what;
    }

    const Scene& scene_;
    const VrnWriterOptions& options_;
    TextBlock text_;
    std::vector<VrnLoss> losses_;
    VrnInputs inputs_;
    Before before_ = Before::Nothing;
    std::unordered_set<const Node*> late_;
    std::unordered_set<const Node*> made_; // the definitions written so far
};

} // namespace

std::vector<VrnLoss> writeVrn(const Scene& scene, const VrnWriterOptions& options, const TextSink& sink) {
    return SceneText(scene, options, sink).write();
}

std::vector<VrnLoss> writeVrnFile(const Scene& scene, const String& path, const VrnWriterOptions& options) {
    OutputFile file(path.buf());
    std::vector<VrnLoss> losses = writeVrn(scene, options, [&](std::string_view piece) { file.write(piece); });
    file.commit();
    return losses;
}

} // namespace vor::velmo_sdk::impl
