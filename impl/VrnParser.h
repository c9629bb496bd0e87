// VrnParser: parses one text into one scene.
//
//     VrnParser().parse(&scene, text); // one parser for each text
//
// A recursive-descent parser with three tokens of look-ahead: the current token and the next two. A recogniser
//   returns false, with nothing consumed (except by scalars: Scalar.cpp), if its form does not begin at this token,
//   returns true after it has consumed and applied all of it,
//   throws ReadError if its form begins but is malformed.
// The comment above a recogniser contains its rule, from which scripts/grammar.py generates docs/grammar.md: `::=`
// defines, quoted words are keywords or characters, names in capitals are tokens of the lexer.
//
// The caller owns scene and lexer, which must outlive the parse. A parser is confined to one thread. Time is linear in
// the text. Implements Reader.h; the members are public so that tests can call each step.
#pragma once

#include "impl/AssignInfo.h"
#include "impl/BufferReader.h"
#include "impl/DefinedNodes.h"
#include "impl/PendingLinks.h"
#include "impl/Reader.h"
#include "impl/SourceMap.h"
#include "impl/lexer/Lexer.h"
#include "impl/lexer/PlainStatement.h"
#include "scene/Input.h"
#include "scene/Node.h"
#include "scene/Scene.h"

namespace vor::velmo_sdk::impl {

struct RemoveInfo {
    Token name;
};

struct DefineInfo {
    Token name;
};

struct DeclareInfo {
    Token type;
    Token name;
    bool isWith = false; // the statement ends with a colon
};

struct WithInfo {
    Token name;
};

// Whether nodes find or create an input with its value in one search. A host's scene that offers this promises not to
// read from the file that is being parsed, and not to remove nodes in its functions.
template <class AnyNode>
inline constexpr bool hasInputOrNew = requires(AnyNode* node, const String& name, AttrData& value) {
    node->inputOrNew(name, value);
};

class VrnParser {
public:
    using IScene = interfaces::IScene;
    using IInput = interfaces::IInput;
    using AssignInfo = impl::AssignInfo;

    VrnParser() = default;
    VrnParser(const VrnParser&) = delete;
    VrnParser& operator=(const VrnParser&) = delete;

    // The driver (VrnParser.cpp).
    bool parse(IScene* scene, const String& text);
    bool parse(IScene* scene, const File& file);
    bool parse(IScene* scene, Lexer* lexer);
    void prime();
    void primeWithNotices();
    [[nodiscard]] bool readStatements();
    void reportTruncation(bool isRead) const;
    void parseStatements();
    [[nodiscard]] bool parseStatement();
    const Token& consume(); // the consumed token, valid until the next call
    [[nodiscard]] bool match(Token& out, Token::Type type);
    [[nodiscard]] bool accept(Token::Type type) { // match() for a token whose text is not needed
        const bool isThere = current().type == type;
        if (isThere)
            consume();
        return isThere;
    }
    [[nodiscard]] const Token& current() const noexcept { return ahead(0); }
    [[nodiscard]] const Token& ahead(i32 k) const noexcept {
        const i32 place = cursor + k;
        return tokens[static_cast<std::size_t>(place < lookahead ? place : place - lookahead)];
    }

    // Errors (Diagnostics.cpp). All of them throw; the first three report the position of the token consumed last.
    [[noreturn]] void parseError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    [[noreturn]] void bufferError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    [[noreturn]] void internalError(const String& kind, const char* format, va_list arguments)
        __attribute__((format(printf, 3, 0)));
    [[noreturn]] void tokenError(const String& expected, const Token& found);
    [[noreturn]] void tokenError(const Token& found);

    // Diagnostics about the type of a value (TypeDiagnostics.cpp). Only the first one throws.
    [[noreturn]] void typeError(const String& valueType, IInput* input, bool isArray);
    void narrowTypeWarning(const String& valueType, IInput* input);
    void wrongTypeWarning(const String& found, IInput* input);
    void badEnumValueWarning(const String& value, IInput* input);

    // The fast path for plain statements (PlainStatements.cpp).
    void parsePlainStatements();
    [[nodiscard]] bool mayBePlain() const noexcept; // whether the tokens in sight can begin a plain statement

    // Statements (Comment.cpp, NodeStatements.cpp, Assignment.cpp).
    [[nodiscard]] bool parseComment();
    [[nodiscard]] bool parseRemove();
    [[nodiscard]] bool parseDefine();
    [[nodiscard]] bool parseDeclare();
    [[nodiscard]] bool parseWith();
    [[nodiscard]] bool parseAssign();
    [[nodiscard]] bool remove(RemoveInfo& info);
    [[nodiscard]] bool define(DefineInfo& info);
    [[nodiscard]] bool declare(DeclareInfo& info);
    [[nodiscard]] bool with(WithInfo& info);
    void noteDeclared(const Node* node, TextPosition position);
    void logTypeNotices(const DeclareInfo& info, Node* node, bool isNew) const;
    [[nodiscard]] bool keywordStatement(u64 keyword, Token::Type end, Token& name);

    // Paths (Path.cpp).
    [[nodiscard]] bool path(ds::Vector<Token>& out);
    [[nodiscard]] bool arrayattr(ds::Vector<Token>& out);
    [[nodiscard]] bool scalarattr(ds::Vector<Token>& out);
    [[nodiscard]] static String collapse(std::span<const Token> tokens);

    // Values (Value.cpp, Scalar.cpp, Buffer.cpp).
    [[nodiscard]] bool value(AssignInfo& info);
    [[nodiscard]] bool scalar(AssignInfo& info);
    [[nodiscard]] bool buffer(AssignInfo& info);
    [[nodiscard]] static bool parseElem(std::string_view text, DataType type, u8* out);

    // Links (Links.cpp).
    [[nodiscard]] bool connect(AssignInfo& info);
    [[nodiscard]] bool reference(AssignInfo& info);
    [[nodiscard]] static PendingLink linkTo(const ds::Vector<Token>& source);
    void resolveConnections();
    void resolveReferences();

    // The position of the last character of the token consumed last.
    [[nodiscard]] TextPosition position() const noexcept { return prevToken.position(); }

    Lexer* lexer = nullptr;                // not owned; null until parse()
    i32 lookahead = TextKeeper::lookahead; // tokens scanned before they are consumed
    i32 cursor = 0;                        // index of the current token in `tokens`, a ring buffer
    ds::Vector<Token> tokens;
    Token prevToken;              // consumed last
    Scene* scene = nullptr;       // not owned
    SourceMap* sources = nullptr; // not owned; null unless the caller wants to know the positions
    Node* withNode = nullptr;
    DefinedNodes definedNodes;
    PendingLinks pendingConnections;
    PendingLinks pendingReferences;
    u64 implicitElements = 0;         // array elements created because a later one was assigned
    bool readsPlainStatements = true; // false: tests read every statement by its tokens
    u64 plainStatementCount = 0;      // those read by the fast path
    AssignInfo assignment;            // the current one; a member so that its memory is reused

private:
    // Steps of a plain statement (PlainStatements.cpp).
    [[nodiscard]] bool apply(const PlainStatement& statement, TextPlace& applied);
    [[nodiscard]] bool applyComments(const PlainStatement& statement, TextPlace& applied);
    [[nodiscard]] bool applyDeclaration(const PlainStatement& statement);
    [[nodiscard]] bool applyAssignment(const PlainStatement& statement);
    [[nodiscard]] Node* targetNode(const PlainStatement& statement);
    [[nodiscard]] bool applyValue(const PlainStatement& statement, Node* node, const String& name);
    [[nodiscard]] bool applyLink(const PlainStatement& statement, Node* node, const String& name);
    void continueAfter(const TextPlace& applied);

    // Steps of an assignment (Assignment.cpp).
    struct Step;
    [[nodiscard]] Node* targetNode(const AssignInfo& info);
    [[nodiscard]] Input* targetInput(const AssignInfo& info);
    [[nodiscard]] Input* namedInput(Node* node, Input* parent, const Step& step);
    [[nodiscard]] Input* elementInput(Input* array, const Step& step);
    [[nodiscard]] u64 elementIndex(const Input* array, const Token& brackets);
    [[nodiscard]] bool canGrow(const Input* array, u64 index) const;
    void growTo(Input* array, u64 index, const Token& brackets);
    void setElementType(Input* array, const Step& step);
    void passThrough(Input* input, const Step& step);
    [[nodiscard]] String fullPath(const AssignInfo& info, Node* node);
    static void store(PendingLinks& links, Input* input, PendingLink link);
    void apply(AssignInfo& info, Input* input);
    [[nodiscard]] bool refuses(Input* input, const AssignInfo& info);
    void write(AttrData data, Input* input);

    // Steps of a scalar and of a buffer (Scalar.cpp, Buffer.cpp).
    [[nodiscard]] bool literal(AssignInfo& info, bool& isRead);
    [[nodiscard]] bool keywordScalar(AssignInfo& info);
    [[nodiscard]] Token nextToken();
    [[nodiscard]] Token bufferList();
    [[nodiscard]] std::optional<AttrData> zeroBuffer(DataType type, std::string_view brackets) const;
    [[nodiscard]] ElementsRead takeScannedBuffer(AssignInfo& info);
    [[nodiscard]] ElementsRead readBufferText(DataType type, AssignInfo& info);
    void report(const ElementsRead& elements, const AssignInfo& info);

    // The node that plain statements named last, valid while only plain statements are applied.
    struct {
        std::string_view name;
        Node* node = nullptr;
    } lastTarget;

    // The elements of the buffer whose list was scanned last, until buffer() takes them; the token contains none.
    std::optional<BufferReader::Result> bufferInScan;
};

inline bool VrnParser::mayBePlain() const noexcept {
    using Type = Token::Type;
    if (!readsPlainStatements)
        return false;
    const Type third = ahead(2).type;
    switch (current().type) {
    case Type::Comment:
        return true;
    case Type::Dot:
        return third == Type::Equals || third == Type::Pipe;
    case Type::Id:
        if (ahead(1).type == Type::Id)
            return third == Type::Semicolon || third == Type::Colon;
        // The path may continue after the look-ahead.
        return third == Type::Id && lexer->nextCharacter() != '.' && lexer->nextCharacter() != '[';
    default:
        return false;
    }
}

} // namespace vor::velmo_sdk::impl
