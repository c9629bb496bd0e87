#include "impl/Formatter.h"

#include "impl/BufferType.h"
#include "impl/FormattedLines.h"
#include "impl/Messages.h"
#include "impl/lexer/StringLexer.h"
#include "scene/syntax/Keyword.h"

#include <algorithm>
#include <utility>

namespace vor::velmo_sdk::impl {

namespace {

using Type = Token::Type;

constexpr std::size_t indentation = 4;

// A token as it is written: spelled as in the text, except that lists have single spaces between elements.
struct Piece {
    Type type = Type::Eof;
    std::string_view text;
    std::size_t lineFeeds = 0; // between the previous token and this one

    [[nodiscard]] bool isList() const noexcept { return type == Type::Parens || type == Type::Braces; }
    [[nodiscard]] bool endsStatement() const noexcept {
        return type == Type::Semicolon || type == Type::Colon || type == Type::Comment;
    }
};

// Splits a text into tokens and keeps their spelling.
class Pieces {
public:
    explicit Pieces(const String& text) : text_(text), lexer_(text) {}

    [[nodiscard]] Piece next() {
        const std::size_t end = lexer_.offset(); // of the previous token
        const Token token = lexer_.nextToken();
        if (token.type == Type::Invalid || (token.type == Type::Eof && token.text != messages::endOfInput))
            throw FormatError(token.text, token.position());
        if (token.type == Type::Eof)
            checkEnd();
        const std::string_view taken = text_.view().substr(end, lexer_.offset() - end);
        const auto isBlank = [](char c) { return isIn(c, blankChar); };
        const auto blanks = static_cast<std::size_t>(std::ranges::find_if_not(taken, isBlank) - taken.begin());
        Piece piece{token.type, taken.substr(blanks),
                    static_cast<std::size_t>(std::ranges::count(taken.substr(0, blanks), '\n'))};
        if (piece.isList()) {
            checkList(piece.text, token.position());
            piece.text = token.text;
        }
        return piece;
    }

    // Call when the pieces that next() has returned are no longer needed.
    void forget() noexcept { lexer_.startStatement(); }

private:
    // Refuses bytes that the reader skips silently: formatting would remove them.
    void checkEnd() const {
        if (lexer_.foreignBytes() != 0)
            refuseForeign(lexer_.foreignBytes(), lexer_.firstForeignByte());
        if (lexer_.isEndedByByte())
            throw FormatError(messages::endedByByte, lexer_.nextPosition());
    }
    static void checkList(std::string_view list, TextPosition position) {
        if (const auto count = std::ranges::count_if(list, [](char c) { return isIn(c, foreignChar); }))
            refuseForeign(static_cast<u64>(count), position);
    }
    [[noreturn]] static void refuseForeign(u64 count, TextPosition position) {
        throw FormatError(String::format(messages::foreignBytes, static_cast<unsigned long long>(count)), position);
    }

    const String& text_;
    StringLexer lexer_;
};

// Whether two tokens are written without a blank between them. Other pairs could merge into one token.
bool canTouch(const Piece& left, const Piece& right) noexcept {
    const bool isPathPart = left.type == Type::Id || left.type == Type::Brackets;
    switch (right.type) {
    case Type::Semicolon:
    case Type::Colon:
        return true;
    case Type::Dot:
    case Type::Brackets:
        return isPathPart;
    case Type::Id:
        return left.type == Type::Dot;
    case Type::Parens:
        return left.type == Type::Id;
    case Type::Equals:
        return left.type == Type::Pipe;
    default:
        return false;
    }
}

// How many words of a list form an element, depending on the tokens before it.
std::size_t elementLength(std::span<const Piece> before, const Piece& list) {
    if (list.type == Type::Braces && before.size() >= 2 && before[before.size() - 1].type == Type::Brackets) {
        const DataType* type = bufferType(before[before.size() - 2].text);
        if (!type)
            return 1;
        const ElementLayout layout = elementLayout(*type);
        const bool isPayload = layout.isCompressible() && list.text.starts_with("{.");
        return isPayload ? 1 : layout.components;
    }
    const u64 word = list.type == Type::Parens && !before.empty() ? keywordNumber(before.back().text) : 0;
    return word == keyword("mat3") ? 3 : word == keyword("mat4") ? 4 : 1; // rows
}

// A list keeps a separator after its last element, because the separator is part of the text of the token.
struct ListText {
    std::string_view words; // separated by single spaces
    bool hasLastSeparator;

    explicit ListText(std::string_view list) noexcept
        : words(list.substr(1, list.size() - 2)), hasLastSeparator(words.ends_with(' ')) {
        words.remove_suffix(hasLastSeparator ? 1 : 0);
    }
    [[nodiscard]] std::string_view separator() const noexcept { return hasLastSeparator ? "," : ""; }
};

// The text of a statement: on one line if it fits or has no lists, otherwise with wrapped lists.
class StatementText {
public:
    StatementText(std::span<const Piece> pieces, u32 column)
        : pieces_(pieces), indent_(pieces[0].type == Type::Dot ? indentation : 0), column_(column) {}

    [[nodiscard]] std::size_t indent() const noexcept { return indent_; }

    [[nodiscard]] std::string text() {
        text_ = std::string(indent_, ' ');
        appendAll(false);
        if (column_ == 0 || text_.size() <= column_)
            return std::move(text_);
        text_.resize(indent_);
        appendAll(true);
        return std::move(text_);
    }

private:
    void appendAll(bool isWrapped) {
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            if (i != 0 && !canTouch(pieces_[i - 1], pieces_[i]))
                text_ += ' ';
            if (!pieces_[i].isList())
                text_ += pieces_[i].text;
            else if (isWrapped && pieces_[i].text.size() > 2)
                appendLines(pieces_[i], elementLength(pieces_.first(i), pieces_[i]));
            else
                appendLine(pieces_[i].text);
        }
    }

    void appendLine(std::string_view list) {
        const ListText text(list);
        text_ += list[0];
        text_.append(text.words).append(text.separator()).append(text.hasLastSeparator ? 1 : 0, ' ');
        text_ += list.back();
    }

    // Puts as many elements of `each` words on each line as fit.
    void appendLines(const Piece& list, std::size_t each) {
        const ListText text(list.text);
        text_ += list.text[0];
        std::size_t used = column_; // columns of the current line
        for (std::string_view left = text.words; !left.empty();) {
            const std::string_view element = takeWords(left, each);
            const bool isNextLine = used + 1 + element.size() > column_;
            if (isNextLine)
                text_.append("\n").append(indent_ + indentation, ' ');
            else
                text_ += ' ';
            text_ += element;
            used = (isNextLine ? indent_ + indentation : used + 1) + element.size();
        }
        text_.append(text.separator()).append("\n").append(indent_, ' ');
        text_ += list.text.back();
    }

    static std::string_view takeWords(std::string_view& words, std::size_t count) noexcept {
        std::size_t length = 0;
        for (; count != 0 && length < words.size(); --count)
            length = std::min(words.find(' ', length + 1), words.size());
        const std::string_view taken = words.substr(0, length);
        words.remove_prefix(std::min(length + 1, words.size()));
        return taken;
    }

    std::span<const Piece> pieces_;
    std::size_t indent_;
    std::size_t column_;
    std::string text_;
};

class Formatter {
public:
    Formatter(const String& text, const FormatOptions& options, const TextSink& sink)
        : pieces_(text), column_(options.column), lines_(sink, column_ != 0 ? column_ : FormatOptions().column) {
        if (text.startsWith(byteOrderMark))
            sink(byteOrderMark);
    }

    void run() {
        for (Piece piece = pieces_.next(); piece.type != Type::Eof; piece = pieces_.next()) {
            if (piece.type == Type::Comment && statement_.empty())
                takeComment(piece);
            else
                takeToken(piece);
        }
        finishStatement();
        flushComments(0, true);
        lines_.finish();
    }

private:
    static constexpr const char* byteOrderMark = "\xEF\xBB\xBF";

    // Blank lines at the start of the text are dropped.
    bool isAfterBlank(const Piece& piece) { return !std::exchange(isFirst_, false) && piece.lineFeeds > 1; }

    void takeToken(const Piece& piece) {
        if (statement_.empty())
            isStatementAfterBlank_ = isAfterBlank(piece);
        statement_.push_back(piece);
        if (piece.endsStatement())
            finishStatement();
    }

    // A comment after a statement on the same line remains there.
    void takeComment(const Piece& piece) {
        if (piece.lineFeeds == 0 && comments_.empty() && isAfterStatement_)
            lines_.appendComment(piece.text);
        else
            comments_.push_back({std::string(piece.text), isAfterBlank(piece)});
        isAfterStatement_ = false;
        pieces_.forget();
    }

    void finishStatement() {
        if (statement_.empty())
            return;
        StatementText statement(statement_, column_);
        flushComments(statement.indent(), isStatementAfterBlank_);
        lines_.append({statement.text(), isStatementAfterBlank_});
        indentBefore_ = statement.indent();
        isAfterStatement_ = statement_.back().type != Type::Comment;
        statement_.clear();
        pieces_.forget();
    }

    // Indents comments like the next statement. If blank lines separate them from it, those up to the first blank line
    // are indented like the previous statement.
    void flushComments(std::size_t indent, bool isAfterBlank) {
        const auto apart = std::ranges::find(comments_, true, &FormattedLines::Line::isAfterBlank);
        const bool isApart = isAfterBlank || apart != comments_.end();
        for (auto comment = comments_.begin(); comment != comments_.end(); ++comment) {
            comment->text.insert(0, isApart && comment < apart ? indentBefore_ : indent, ' ');
            lines_.append(std::move(*comment));
        }
        comments_.clear();
    }

    Pieces pieces_;
    u32 column_;
    FormattedLines lines_;
    std::vector<Piece> statement_;
    std::vector<FormattedLines::Line> comments_; // on separate lines before the next statement
    std::size_t indentBefore_ = 0;
    bool isFirst_ = true;
    bool isStatementAfterBlank_ = false;
    bool isAfterStatement_ = false;
};

} // namespace

void formatVrn(const String& text, const FormatOptions& options, const TextSink& sink) {
    Formatter(text, options, sink).run();
}

} // namespace vor::velmo_sdk::impl
