#include "impl/edit/Statements.h"

#include "impl/Messages.h"
#include "impl/VrnParser.h"

#include <algorithm>
#include <span>

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

String pathInNode(const Input& input) {
    std::vector<const Input*> steps;
    for (const Input* step = &input; step; step = step->parent())
        steps.push_back(step);
    std::string path;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        const bool isElement = (*step)->isElement();
        path += isElement ? '[' : '.';
        path += (*step)->name().view();
        path += isElement ? "]" : "";
    }
    return std::string_view(path);
}

// Drives the parser statement by statement, without its fast path, and notes what it does.
class Statements::Reading {
public:
    Reading(Statements& result, Scene& scene) : result_(result), scene_(scene), lexer_(result.text_) {
        parser_.scene = &scene;
        parser_.lexer = &lexer_;
        parser_.readsPlainStatements = false;
    }

    void run() {
        const ScopedLogSink sink([this](const LogRecord& record) { note(record); }, Notices::Yes);
        const NameMapScope names(&scene_);
        try {
            parser_.primeWithNotices();
            while (parser_.current().type > Type::Invalid)
                readStatement();
            parser_.resolveConnections();
            parser_.resolveReferences();
            parser_.reportTruncation(true);
        } catch (const ReadError& error) {
            result_.fatal_.push_back({error.what(), error.position()});
        } catch (const std::runtime_error& error) {
            result_.fatal_.push_back({error.what(), parser_.position()});
        }
        const auto end = std::ranges::find(lexer_.places(), Type::Eof, &RecordingLexer::Place::type);
        if (end != lexer_.places().end())
            result_.end_ = end->span.begin;
    }

private:
    using Places = std::span<const RecordingLexer::Place>;

    void note(const LogRecord& record) {
        result_.findings_.push_back({record.text, record.position, record.format});
        ++result_.counts_[record.format];
        hasError_ = hasError_ || record.severity == LogSeverity::Error;
    }

    // The number of tokens that are consumed.
    [[nodiscard]] std::size_t consumed() const noexcept {
        return lexer_.places().size() - static_cast<std::size_t>(parser_.lookahead);
    }

    void readStatement() {
        lexer_.startStatement();
        hasError_ = false;
        Statement statement;
        const std::size_t first = consumed();
        const Places ahead = Places(lexer_.places()).subspan(first);
        const bool isAboutNode = ahead[0].type == Type::Id && ahead[1].type == Type::Id;
        const bool isDot = ahead[0].type == Type::Dot;
        if (isDot)
            statement.node = current_;
        else if (!isAboutNode && ahead[0].type == Type::Id)
            statement.node = mention(MentionRole::Node, ahead[0].span);
        statement.hasDot = isDot;
        if (!(isAboutNode ? readNodeStatement(statement) : readOther(statement)))
            parser_.parseError(messages::unrecognizedToken, String(parser_.current().text).buf());
        const Places tokens = Places(lexer_.places()).subspan(first, consumed() - first);
        statement.all = {tokens.front().span.begin, tokens.back().span.end};
        statement.isTaken = !hasError_;
        if (isAboutNode)
            addNames(statement, tokens);
        else if (statement.isAssignment())
            addParts(statement, tokens);
        result_.statements_.push_back(std::move(statement));
    }

    // In the order of the parser.
    [[nodiscard]] bool readNodeStatement(Statement& statement) {
        if (parser_.parseRemove())
            statement.kind = StatementKind::Removal;
        else if (parser_.parseDefine())
            statement.kind = StatementKind::Definition;
        else if (parser_.parseDeclare())
            statement.kind = StatementKind::Declaration;
        else
            return false;
        return true;
    }

    [[nodiscard]] bool readOther(Statement& statement) {
        if (parser_.parseComment())
            return true;
        if (!parser_.parseAssign())
            return false;
        const AssignInfo& info = parser_.assignment;
        statement.kind = info.isConnection  ? StatementKind::Connection
                         : info.isReference ? StatementKind::Reference
                                            : StatementKind::Value;
        statement.input = pathInNode(static_cast<Input&>(*info.input));
        return true;
    }

    // Adds a mention of a node or type by the current statement; returns the number of the node.
    u32 mention(MentionRole role, const Span& span) {
        const u32 node = role == MentionRole::Node ? result_.nodeOf(span.of(result_.text())) : Statement::noNode;
        result_.mentions_.push_back({role, node, result_.statements_.size(), span});
        return node;
    }

    // What `remove NAME;`, `define NAME;` and `TYPE NAME;` name.
    void addNames(Statement& statement, Places tokens) {
        const Span name = tokens[1].span;
        const std::string_view word = name.of(result_.text());
        statement.endsInColon = tokens[2].type == Type::Colon;
        if (statement.kind == StatementKind::Declaration)
            mention(MentionRole::Type, tokens[0].span);
        if (statement.kind != StatementKind::Removal && result_.nodes_.try_emplace(word, nextNode_).second)
            ++nextNode_;
        statement.node = mention(MentionRole::Node, name);
        if (statement.kind == StatementKind::Removal)
            result_.nodes_.erase(word);
        if (statement.endsInColon)
            current_ = statement.node;
    }

    // The path and value of an assignment, and the node that a link names.
    void addParts(Statement& statement, Places tokens) {
        const auto equals = std::ranges::find(tokens, Type::Equals, &RecordingLexer::Place::type);
        const auto at = static_cast<std::size_t>(equals - tokens.begin());
        const std::size_t pathEnd = at - (statement.kind == StatementKind::Connection ? 1 : 0);
        const Places value = tokens.subspan(at + 1, tokens.size() - at - 2);
        statement.path = {tokens.front().span.begin, tokens[pathEnd - 1].span.end};
        statement.value = {value.front().span.begin, value.back().span.end};
        const Places source = value.subspan(value.front().type == Type::Dot ? 1 : 0);
        const bool hasNode =
            statement.kind == StatementKind::Reference ||
            (statement.kind == StatementKind::Connection && source.size() > 1 && source[1].type == Type::Dot);
        if (hasNode && source.front().type == Type::Id)
            mention(MentionRole::Link, source.front().span);
    }

    Statements& result_;
    Scene& scene_;
    RecordingLexer lexer_;
    VrnParser parser_;
    u32 nextNode_ = 0;
    u32 current_ = Statement::noNode; // the node that paths with a leading dot refer to
    bool hasError_ = false;
};

Statements::Statements(const String& text, Scene& scene) : text_(text), end_(text.len()) {
    Reading(*this, scene).run();
}

u32 Statements::nodeOf(std::string_view name) const {
    const auto found = nodes_.find(name);
    return found == nodes_.end() ? Statement::noNode : found->second;
}

} // namespace vor::velmo_sdk::impl
