// The fast path for plain statements: reads them from their characters, without tokens.
//
// One rule keeps it equivalent to the general path: a plain statement is applied once the three tokens after it are
// known to be valid, either because the next statement is plain, too, or because they are looked at. The general path
// has scanned these tokens before it applies a statement, and an error in them comes first.
//
// Nothing here reports anything. A statement that would log an error, a warning or a notice is left to the general
// path, which starts again at its first character.
#include "impl/TypeRules.h"
#include "impl/VrnParser.h"
#include "impl/lexer/Word.h"
#include "scene/syntax/HeaderComment.h"
#include "scene/syntax/Keyword.h"

#include <type_traits>
#include <utility>

namespace vor::velmo_sdk::impl {

using Kind = PlainStatement::Kind;
using Type = Token::Type;

// Whether names may be mapped, which needs a catalogue. A host's scene may have name maps without one.
template <class AnyScene> static bool hasNameMaps(const AnyScene& scene) {
    if constexpr (requires { scene.catalogue(); })
        return scene.catalogue() != nullptr;
    else
        return true;
}

// The input of a name. A missing one is created: with the value, which is then moved from, or, with a scene that does
// not support that, with its type alone and reported as an existing one.
template <class AnyNode> static auto inputOrNew(AnyNode* node, const String& name, AttrData& value) {
    using AnyInput = std::remove_pointer_t<decltype(node->input(name))>;
    struct Result {
        AnyInput* input;
        bool isNew;
    };
    if constexpr (hasInputOrNew<AnyNode>) {
        const auto [input, isNew] = node->inputOrNew(name, value);
        return Result{input, isNew};
    } else {
        const bool exists = node->hasInput(name, AttrType::Null);
        return Result{exists ? node->input(name) : node->createInput(name, value.type()), false};
    }
}

// Reads plain statements, beginning with the current token. Afterwards, the current statement is for the general path.
void VrnParser::parsePlainStatements() {
    const TextPlace begin = lexer->beginOf(current(), static_cast<u64>(lookahead));
    if (!begin.at)
        return;
    PlainStatement buffers[2];
    PlainStatement* statement = &buffers[0];
    PlainStatement* next = &buffers[1];
    PlainScanner scanner(begin, lexer->windowEnd());
    if (!scanner.scan(*statement))
        return lexer->refuseRestartBefore(scanner.place().at);
    TextPlace applied = begin; // where the first statement begins that is not applied
    const Token before = prevToken;
    lastTarget = {};
    try {
        for (bool isNextPlain = true; isNextPlain; std::swap(statement, next)) {
            isNextPlain = scanner.scan(*next);
            if (!isNextPlain)
                lexer->refuseRestartBefore(scanner.place().at);
            if (!isNextPlain && !PlainScanner(statement->end, lexer->windowEnd()).areTokensAhead())
                break;
            if (!apply(*statement, applied)) {
                lexer->refuseRestartBefore(statement->begin.at);
                break;
            }
        }
    } catch (...) {
        continueAfter(applied);
        throw;
    }
    prevToken = before;
    if (applied.at != begin.at)
        continueAfter(applied);
}

// Scans the look-ahead again. The next three tokens are known to be valid.
void VrnParser::continueAfter(const TextPlace& applied) {
    const TextPosition last = applied.positionBefore();
    prevToken = Token{Type::Semicolon, ";", last.line, last.column};
    lexer->restart(applied);
    cursor = 0;
    for (Token& token : tokens)
        token = lexer->nextToken();
}

// Applies the comments and the statement, and moves `applied` to the end of what is applied, or of what throws. Returns
// false if the rest is for the general path.
bool VrnParser::apply(const PlainStatement& statement, TextPlace& applied) {
    if (statement.comments.at != statement.begin.at && !applyComments(statement, applied))
        return false;
    const TextPlace before = std::exchange(applied, statement.end);
    const bool isApplied =
        statement.kind == Kind::Declaration ? applyDeclaration(statement) : applyAssignment(statement);
    if (isApplied)
        ++plainStatementCount;
    else
        applied = before;
    return isApplied;
}

bool VrnParser::applyComments(const PlainStatement& statement, TextPlace& applied) {
    PlainScanner scanner(statement.comments, lexer->windowEnd());
    for (std::string_view text; scanner.place().at != statement.begin.at; scanner.blanks()) {
        if (!scanner.comment(text))
            return false;
        const String comment = text;
        if (readHeaderComment(comment).kind != HeaderComment::Kind::None)
            return false;
        applied = scanner.place();
        scene->pushFileComment(comment);
    }
    return true;
}

// The position of the last character of a name in the statement. Blanks before it may contain line ends.
static TextPosition endOf(std::string_view name, const PlainStatement& statement) noexcept {
    TextPlace place = statement.begin;
    for (; place.at != name.data(); ++place.at)
        if (*place.at == '\n') {
            ++place.line;
            place.lineStart = TextPlace::lowerHalf(place.at);
        }
    return place.positionOf(name.data() + name.size() - 1);
}

bool VrnParser::applyDeclaration(const PlainStatement& statement) {
    const String name = statement.node;
    Node* node = scene->findNode(name);
    if (wantsNotices() && (node || keywordNumber(statement.word) == keyword("with")))
        return false;
    if (!node) {
        node = scene->createNode(statement.word, name, "");
        if (sources)
            sources->set(node, endOf(statement.node, statement));
    }
    if (statement.isWith)
        withNode = node;
    lastTarget = {statement.node, node};
    return true;
}

bool VrnParser::applyAssignment(const PlainStatement& statement) {
    Node* node = targetNode(statement);
    if (!node)
        return false;
    String name = statement.name;
    if (hasNameMaps(*scene))
        name = updateInputName(node->type(), name);
    return statement.kind == Kind::Value ? applyValue(statement, node, name) : applyLink(statement, node, name);
}

// Consecutive statements often name the same node.
Node* VrnParser::targetNode(const PlainStatement& statement) {
    if (statement.node.empty())
        return withNode;
    if (!hasInputOrNew<Node> || !isSameWord(statement.node, lastTarget.name))
        lastTarget = {statement.node, scene->findNode(statement.node)};
    return lastTarget.node;
}

static AttrData dataOf(const PlainStatement& statement) {
    switch (valueKind(statement.type)) {
    case ValueKind::Bool:
        return AttrData::boolean(statement.integer != 0);
    case ValueKind::Int:
        return AttrData::integer(statement.integer);
    case ValueKind::Real:
        return AttrData::real(statement.reals[0]);
    case ValueKind::Components:
        return AttrData::numbers(statement.type, statement.reals);
    case ValueKind::String:
        if (statement.hasEscapes)
            return AttrData::string(String(statement.word).unescape());
        return AttrData::string(statement.word);
    case ValueKind::Null: // not plain: the scanner refuses these
    case ValueKind::UInt:
    case ValueKind::Node:
    case ValueKind::Buffer:
    case ValueKind::Array:
    case ValueKind::Object:
        break;
    }
    return {};
}

// Whether a value can be written without a diagnostic and without effects on other inputs.
static bool takesSilently(const Input* input, AttrType type) {
    const Fit how = fit(type, input->type());
    const bool isFit = how == Fit::Same || how == Fit::Converted;
    return isFit && !input->isLocked() && !input->isLinkOnly() &&
           (type != AttrType::String || input->enumeration().isEmpty());
}

bool VrnParser::applyValue(const PlainStatement& statement, Node* node, const String& name) {
    AttrData data = dataOf(statement);
    const auto [input, isNew] = inputOrNew(node, name, data);
    if (sources)
        sources->set(input, endOf(statement.name, statement));
    if (isNew)
        return true;
    if (!takesSilently(input, statement.type))
        return false;
    input->assign(statement.type == input->type() ? std::move(data) : convert(data, input->type()));
    return true;
}

bool VrnParser::applyLink(const PlainStatement& statement, Node* node, const String& name) {
    if (wantsNotices() && node->hasInput(name, AttrType::Null))
        return false; // the link may replace one
    AttrData untyped;
    const auto [input, isNew] = inputOrNew(node, name, untyped);
    if (sources)
        sources->set(input, endOf(statement.name, statement));
    PendingLinks& links = statement.kind == Kind::Connection ? pendingConnections : pendingReferences;
    PendingLink link{.node = statement.word, .output = statement.output, .position = statement.linkEnd};
    if (isNew)
        links.storeNew(input, std::move(link));
    else
        store(links, input, std::move(link));
    return true;
}

} // namespace vor::velmo_sdk::impl
