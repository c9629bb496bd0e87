// Generates random texts from the rules of docs/grammar.md.
//
//     RandomText texts(grammar, seed);
//     for (int i = 0; i < 1000; ++i)
//         read(texts.next({}));
//
// The same grammar and seed always produce the same texts. Most are valid: their nodes exist, the names of their inputs
// distinguish arrays from objects, and buffers have the right number of elements. Some violate each of these.
#pragma once

#include <map>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace vrn::test {

// The rules of statements, paths, values and links by name, as symbols: quoted words, names of rules, names of tokens
// in capitals, and `( ) | * ?`. Of the rules of tokens, which describe characters, only the names.
struct Grammar {
    using Symbols = std::vector<std::string>;
    std::map<std::string, Symbols> rules;
    std::vector<std::string> tokenRules;
};

// Reads the text of docs/grammar.md.
[[nodiscard]] Grammar readGrammar(const std::string& document);

// All names in the rules that are neither rules nor tokens that RandomText can generate.
[[nodiscard]] std::vector<std::string> unknownSymbols(const Grammar& grammar);

struct RandomTextOptions {
    std::size_t maxStatements = 12;
    bool canRemove = true;     // whether texts may remove nodes
    unsigned breakPercent = 8; // of statements: a token or a character is removed, doubled, moved or changed
};

class RandomText {
public:
    RandomText(const Grammar& grammar, unsigned seed) : grammar_(grammar), random_(seed) {}

    [[nodiscard]] std::string next(const RandomTextOptions& options);

private:
    using Symbols = std::span<const std::string>;

    [[nodiscard]] std::size_t below(std::size_t limit) { return random_() % limit; }
    [[nodiscard]] bool isOneIn(std::size_t count) { return below(count) == 0; }
    template <class Items> [[nodiscard]] auto oneOf(const Items& items) { return items[below(std::size(items))]; }

    void expandRule(const std::string& name);
    void expand(Symbols symbols, const std::string& rule);
    void expandSequence(Symbols symbols, const std::string& rule);
    void expandItem(Symbols item, const std::string& rule);
    [[nodiscard]] unsigned weightOf(Symbols alternative) const;
    [[nodiscard]] std::string token(const std::string& name, const std::string& rule);
    [[nodiscard]] std::string identifier(const std::string& rule);
    [[nodiscard]] std::string integer();
    [[nodiscard]] std::string real();
    [[nodiscard]] std::string string();
    [[nodiscard]] std::string brackets(const std::string& rule);
    [[nodiscard]] std::string braces(const std::string& rule);
    [[nodiscard]] std::string list(char open, std::size_t count, char close);
    [[nodiscard]] std::string comment();
    [[nodiscard]] std::string blank();
    [[nodiscard]] std::string anyCase(std::string word);
    void nameInputs();
    void breakStatement();
    void append(std::string& text);

    const Grammar& grammar_;
    std::mt19937 random_;
    bool canRemove_ = true;
    std::vector<std::string> statement_; // its tokens
};

} // namespace vrn::test
