#include "tests/support/RandomText.h"

#include "impl/BufferType.h"
#include "scene/AttrType.h"
#include "scene/syntax/CharClass.h"

#include <algorithm>
#include <sstream>

namespace vrn::test {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

constexpr std::string_view tokenNames[] = {"ID",     "TRUE",   "FALSE",    "NULL",   "INT",    "REAL",
                                           "STRING", "BRACES", "BRACKETS", "PARENS", "COMMENT"};
constexpr const char* nodes[] = {"a", "b", "c", "a_node_with_a_name_that_is_long"};
constexpr const char* types[] = {"t", "u", "d", "camera"};
constexpr const char* blanks[] = {" ", " ", " ", " ", "  ", "\n", "\n", "\r\n", "\t", "\n\n    ", "\xC2\xA0"};

// The symbols of a line, without the explanation, which follows three blanks.
Grammar::Symbols symbolsOf(std::string_view line) {
    Grammar::Symbols symbols;
    for (std::size_t i = 0; i < line.size();) {
        if (line.substr(i).starts_with("   "))
            break;
        std::size_t length = 1;
        if (line[i] == '\'')
            length = line.find('\'', i + 1) + 1 - i;
        else if (isIn(line[i], identifierChar))
            while (i + length < line.size() && isIn(line[i + length], identifierChar))
                ++length;
        if (line[i] != ' ')
            symbols.emplace_back(line.substr(i, length));
        i += length;
    }
    return symbols;
}

bool isName(const std::string& symbol) { return isIn(symbol[0], identifierChar); }

// The length of the first item: a symbol, or a group in parentheses.
std::size_t itemLength(std::span<const std::string> symbols) {
    std::size_t depth = 0;
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        depth += symbols[i] == "(" ? 1U : 0U;
        depth -= symbols[i] == ")" ? 1U : 0U;
        if (depth == 0)
            return i + 1;
    }
    return symbols.size();
}

// Whether two tokens would be read as other tokens without a blank between them.
bool wouldMerge(std::string_view left, std::string_view right) {
    if (left.empty() || right.empty())
        return false;
    const bool isNumber = String::isDigit(left[0]) || left[0] == '-';
    const int part = isNumber ? identifierChar | numberChar : identifierChar;
    return isIn(left.back(), part) && isIn(right.front(), part);
}

} // namespace

Grammar readGrammar(const std::string& document) {
    Grammar grammar;
    Grammar::Symbols* last = nullptr;
    bool isInRules = false;
    bool isAboutTokens = false;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("## "))
            isAboutTokens = line == "## Tokens" || line == "## Inside tokens";
        if (line.starts_with("```"))
            isInRules = line == "```text";
        else if (isInRules) {
            const std::size_t sign = line.find(" ::= ");
            const std::string name = line.substr(0, std::min(sign, line.size()));
            if (isAboutTokens) {
                grammar.tokenRules.push_back(name);
                continue;
            }
            if (sign != std::string::npos)
                last = &grammar.rules[name];
            const std::size_t start = sign == std::string::npos ? line.find_first_not_of(' ') : sign + 5;
            const Grammar::Symbols symbols = symbolsOf(std::string_view(line).substr(start));
            last->insert(last->end(), symbols.begin(), symbols.end());
        }
    }
    return grammar;
}

std::vector<std::string> unknownSymbols(const Grammar& grammar) {
    std::vector<std::string> unknown;
    for (const auto& [rule, symbols] : grammar.rules) {
        for (const std::string& symbol : symbols)
            if (isName(symbol) && !grammar.rules.contains(symbol) &&
                std::ranges::find(tokenNames, symbol) == std::end(tokenNames))
                unknown.push_back(symbol);
    }
    return unknown;
}

std::string RandomText::next(const RandomTextOptions& options) {
    canRemove_ = options.canRemove;
    // The nodes that most statements refer to; without them, some texts begin with an error.
    std::string text = isOneIn(20) ? "" : "define d; t a: u b; d c;\n";
    for (std::size_t left = 1 + below(options.maxStatements); left > 0; --left) {
        statement_.clear();
        expandRule("statement");
        nameInputs();
        if (below(100) < options.breakPercent)
            breakStatement();
        append(text);
    }
    if (isOneIn(20))
        text.resize(1 + below(text.size()));
    return text;
}

void RandomText::expandRule(const std::string& name) {
    const std::size_t first = statement_.size();
    expand(grammar_.rules.at(name), name);
    if (name != "bufferType")
        return;
    // The parts of a keyword are separate symbols.
    for (; statement_.size() > first + 1; statement_.pop_back())
        statement_[statement_.size() - 2] += statement_.back();
}

// Expands one of the alternatives.
void RandomText::expand(Symbols symbols, const std::string& rule) {
    std::vector<Symbols> alternatives;
    std::size_t start = 0;
    for (std::size_t i = 0; i < symbols.size(); i += itemLength(symbols.subspan(i)))
        if (symbols[i] == "|") {
            alternatives.push_back(symbols.subspan(start, i - start));
            start = i + 1;
        }
    alternatives.push_back(symbols.subspan(start));
    unsigned sum = 0;
    for (const Symbols& alternative : alternatives)
        sum += weightOf(alternative);
    std::size_t chosen = below(sum);
    for (const Symbols& alternative : alternatives) {
        const unsigned weight = weightOf(alternative);
        if (chosen < weight)
            return expandSequence(alternative, rule);
        chosen -= weight;
    }
}

unsigned RandomText::weightOf(Symbols alternative) const {
    const std::string& first = alternative[0];
    if (first == "remove")
        return canRemove_ ? 1 : 0;
    return first == "assign" ? 24 : first == "comment" || first == "declare" || first == "value" ? 3 : 1;
}

void RandomText::expandSequence(Symbols symbols, const std::string& rule) {
    while (!symbols.empty()) {
        const std::size_t length = itemLength(symbols);
        const Symbols item = symbols.first(length);
        symbols = symbols.subspan(length);
        std::size_t times = 1;
        if (!symbols.empty() && (symbols[0] == "*" || symbols[0] == "?")) {
            times = symbols[0] == "?" ? below(2) : isOneIn(3) ? 1 + below(3) : 0;
            symbols = symbols.subspan(1);
        }
        for (; times > 0; --times)
            expandItem(item, rule);
    }
}

void RandomText::expandItem(Symbols item, const std::string& rule) {
    const std::string& symbol = item[0];
    if (item.size() > 1)
        expand(item.subspan(1, item.size() - 2), rule);
    else if (symbol[0] == '\'')
        statement_.push_back(anyCase(symbol.substr(1, symbol.size() - 2)));
    else if (std::ranges::find(tokenNames, symbol) != std::end(tokenNames))
        statement_.push_back(token(symbol, rule));
    else
        expandRule(symbol);
}

std::string RandomText::token(const std::string& name, const std::string& rule) {
    if (name == "ID")
        return identifier(rule);
    if (name == "TRUE" || name == "FALSE" || name == "NULL")
        return anyCase(std::string(String(std::string_view(name)).toLower().view()));
    if (name == "INT")
        return integer();
    if (name == "REAL")
        return real();
    if (name == "STRING")
        return string();
    if (name == "BRACKETS")
        return brackets(rule);
    if (name == "BRACES")
        return braces(rule);
    if (name == "COMMENT")
        return comment();
    // PARENS: the number of components that the preceding keyword requires.
    const String word = String(std::string_view(statement_.back())).toLower();
    const auto known = attrTypeByName(std::string(1, static_cast<char>(word.buf()[0] - 'a' + 'A')) + (word.buf() + 1));
    const std::size_t count = known ? componentCount(*known) : 3;
    return list('(', isOneIn(20) ? below(20) : count, ')');
}

std::string RandomText::identifier(const std::string& rule) {
    const bool isType = (rule == "declare" && statement_.empty()) || rule == "define";
    if (isType)
        return oneOf(types);
    const bool isNode = rule == "reference" || rule == "remove" || rule == "with" || rule == "declare" ||
                        (rule == "path" && (statement_.empty() || statement_.back() == "="));
    if (!isNode)
        return "x" + std::to_string(below(4));
    const std::size_t chosen = below(30);
    return chosen == 0 ? "nobody" : chosen == 1 ? nodes[3] : nodes[chosen % 3];
}

std::string RandomText::integer() {
    static constexpr const char* odd[] = {
        "1e3", "0b101", "7u", "12U", "9223372036854775807", "-9223372036854775808", "99999999999999999999",
        "-",   "1-2",   "5E"};
    return isOneIn(6) ? oneOf(odd) : std::to_string(static_cast<int>(below(2000)) - 1000) + (isOneIn(6) ? "u" : "");
}

std::string RandomText::real() {
    static constexpr const char* odd[] = {
        "-inf", "-nan", "1f", "2.", "1.5e-300", "1.0e999", "-0.0", "3.14159265358979323846", "1.e", "2N"};
    return isOneIn(6) ? oneOf(odd)
                      : std::to_string(static_cast<int>(below(2000)) - 1000) + "." + std::to_string(below(100000));
}

std::string RandomText::string() {
    static constexpr const char* pieces[] = {"a",
                                             " ",
                                             "text",
                                             "\\n",
                                             "\\\"",
                                             "\\\\",
                                             "\\x41",
                                             "\\u00e4",
                                             "\\q",
                                             "\n",
                                             "\xC3\xA4",
                                             "%s%n",
                                             "#",
                                             ";",
                                             "{",
                                             "\t",
                                             "one of some length, without escapes"};
    std::string text = "\"";
    for (std::size_t i = below(6); i > 0; --i)
        text += oneOf(pieces);
    return text + '"';
}

std::string RandomText::brackets(const std::string& rule) {
    static constexpr const char* odd[] = {"[]",  "[ 1 ]", "[\n0]", "[[1]", "[*]", "[1 2]", "[99999999999999999999]",
                                          "[00]"};
    if (isOneIn(rule == "buffer" ? 40 : 12))
        return oneOf(odd);
    if (rule == "arrayattr" && isOneIn(3))
        return "[*]";
    return rule == "literal" ? "[]" : "[" + std::to_string(below(isOneIn(15) ? 100 : 4)) + "]";
}

std::string RandomText::braces(const std::string& rule) {
    if (rule != "buffer")
        return isOneIn(5) ? list('{', below(5), '}') : "{}";
    const DataType* type = bufferType(statement_[statement_.size() - 2]);
    u64 count = 0;
    if (!type || !String::parse(String(std::string_view(statement_.back())).trimChars("[]"), count) || count > 200)
        return "{}";
    const ElementLayout layout = elementLayout(*type);
    const std::size_t numbers = count * layout.components;
    if (layout.isCompressible() && numbers == 4)
        return isOneIn(5) ? "{.789c63}" : "{ .789c6364 62\n66 010000 18000B}";
    return list('{', isOneIn(10) ? below(numbers + 3) : numbers, '}');
}

std::string RandomText::list(char open, std::size_t count, char close) {
    static constexpr const char* separators[] = {" ", " ", " ", " ", ", ", ",", "\n", "  ", "\r\n\t"};
    const bool isNested = isOneIn(6);
    std::string text(1, open);
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0)
            text += oneOf(separators);
        if (isNested && isOneIn(3)) {
            text += open;
            text += std::to_string(below(100));
            text += close;
        } else {
            text += isOneIn(40) ? real() : std::to_string(below(i % 3 == 0 ? 10 : 100));
        }
    }
    return text + close;
}

std::string RandomText::comment() {
    static constexpr const char* texts[] = {
        "#", "# a comment", "# version: 2", "# version: x", "# time: 2026-01-02 03:04", "#\t\x01 \xC3\xA4 \"{[("};
    return std::string(oneOf(texts)) + (isOneIn(5) ? "\r\n" : "\n");
}

std::string RandomText::anyCase(std::string word) {
    if (isOneIn(10))
        for (char& c : word)
            c = isOneIn(2) && c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return word;
}

std::string RandomText::blank() {
    return isOneIn(60) ? std::string(below(600), '\n') : isOneIn(10) ? oneOf(blanks) : " ";
}

// Names the inputs of a target after their type, so that most statements about an input agree on its type.
void RandomText::nameInputs() {
    const auto end = std::ranges::find_if(statement_, [](const std::string& t) { return t == "=" || t == "|"; });
    if (end == statement_.end() || isOneIn(30))
        return;
    const auto size = static_cast<std::size_t>(end - statement_.begin());
    std::string kind = "v"; // of the value, derived from its first character
    if (*end == "=" && size + 1 < statement_.size()) {
        const char first = statement_[size + 1][0];
        kind = String::isDigit(first) || first == '-' ? "n"
               : String::isLetter(first)              ? statement_[size + 1]
               : first == '"'                         ? "s"
                                                      : "c";
        if (kind == "n" && statement_[size + 1].ends_with('u'))
            kind = "u";
        std::erase_if(kind, [](char c) { return !isIn(c, identifierChar); });
    }
    for (std::size_t i = size; i-- > 1;) {
        const bool isIndex = statement_[i][0] == '[';
        const bool isInput = statement_[i - 1] == "." && isName(statement_[i]);
        if (isIndex)
            kind = "l" + kind;
        else if (isInput && (i + 1 == size || statement_[i + 1] == "."))
            kind = i + 1 < size ? "o" : isOneIn(3) ? "any" : kind;
        if (isInput) {
            statement_[i] = kind + std::to_string(below(3));
            kind = "o";
        }
    }
}

void RandomText::breakStatement() {
    static constexpr const char* strays[] = {";", ":",  ".", "|",    "=", "?",    "}",
                                             "(", "\"", "#", "\xFF", "5", "null", "*"};
    const std::size_t place = below(statement_.size());
    const auto at = statement_.begin() + static_cast<std::ptrdiff_t>(place);
    switch (below(6)) {
    case 0:
        statement_.erase(at);
        break;
    case 1:
        statement_.insert(at, std::string(*at));
        break;
    case 2:
        std::swap(*at, statement_.back());
        break;
    case 3:
        statement_.insert(at, oneOf(strays));
        break;
    case 4:
        at->insert(below(at->size() + 1), oneOf(strays));
        break;
    default:
        at->resize(below(at->size() + 1));
        break;
    }
}

// Appends the tokens, with blanks where they would merge, and elsewhere at random.
void RandomText::append(std::string& text) {
    const bool isTight = isOneIn(4);
    std::string_view before;
    for (const std::string& token : statement_) {
        const bool isPath = token == "." || token == ";" || before == "." || token.starts_with('[');
        if (wouldMerge(before, token))
            text += isOneIn(8) ? blank() + " " : " ";
        else if (!isTight && isOneIn(isPath ? 20 : 2))
            text += blank();
        text += token;
        before = token;
    }
    text += isTight ? "" : blank();
}

} // namespace vrn::test
