// Statements: what each statement of a text is, where it is, and which node and input it is about.
//
// Reads the text into a scene with the parser, one statement after the other. A name may belong to several nodes one
// after the other, because statements remove nodes; each of them has a number.
#pragma once

#include "impl/edit/RecordingLexer.h"
#include "scene/Scene.h"

#include <map>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

enum class StatementKind : u8 { Comment, Removal, Definition, Declaration, Value, Reference, Connection };

struct Statement {
    static constexpr u32 noNode = ~u32(0);

    StatementKind kind = StatementKind::Comment;
    bool hasDot = false;      // of an assignment: the path begins with a dot
    bool endsInColon = false; // of a declaration
    bool isTaken = true;      // no error was logged
    u32 node = noNode;        // the number of the node
    Span all{};               // up to and including its last token
    Span path{};              // of an assignment
    Span value{};             // of an assignment: the value or source
    String input{};           // of an assignment: the path of the input at this time, without the node

    [[nodiscard]] bool isAssignment() const noexcept { return kind >= StatementKind::Value; }
};

// How a node is named: as the node of a statement, as a type, or as the end of a link, which is found when the text
// ends.
enum class MentionRole : u8 { Node, Type, Link };

// A place where a node is named.
struct Mention {
    MentionRole role;
    u32 node; // its number, if the role is Node
    std::size_t statement;
    Span span;
};

// The error that ends a text, or a diagnostic.
struct Finding {
    String text;
    TextPosition position;
    const char* kind = nullptr; // the format of a diagnostic
};

// The path of an input without its node, such as `.uvsets[0].name`.
[[nodiscard]] String pathInNode(const Input& input);

class Statements {
public:
    // Reads the text into the scene; the text is kept.
    Statements(const String& text, Scene& scene);
    Statements(const Statements&) = delete;
    Statements& operator=(const Statements&) = delete;

    [[nodiscard]] std::string_view text() const noexcept { return text_.view(); }
    [[nodiscard]] const std::vector<Statement>& all() const noexcept { return statements_; }
    [[nodiscard]] const std::vector<Mention>& mentions() const noexcept { return mentions_; }

    // Where the text ends: at its end, at a byte that ends it, or at an unterminated token.
    [[nodiscard]] std::size_t end() const noexcept { return end_; }

    // The number of the node that has a name at the end of the text, or Statement::noNode.
    [[nodiscard]] u32 nodeOf(std::string_view name) const;

    // The first error that ended the reading, and all diagnostics and notices.
    [[nodiscard]] const std::vector<Finding>& fatal() const noexcept { return fatal_; }
    [[nodiscard]] const std::vector<Finding>& findings() const noexcept { return findings_; }

    // How often each kind of diagnostic occurs.
    using Counts = std::map<const char*, u64>;
    [[nodiscard]] const Counts& counts() const noexcept { return counts_; }

private:
    class Reading;

    String text_;
    std::vector<Statement> statements_;
    std::vector<Mention> mentions_;
    std::map<std::string_view, u32> nodes_; // at the end of the text
    std::vector<Finding> fatal_;
    std::vector<Finding> findings_;
    Counts counts_;
    std::size_t end_ = 0;
};

} // namespace vor::velmo_sdk::impl
