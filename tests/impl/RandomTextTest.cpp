// Random texts generated from the grammar are read alike from every source of characters.
#include "tests/support/RandomText.h"

#include "tests/support/EachSource.h"
#include "tests/support/Invariants.h"
#include "tests/support/Reading.h"
#include "tests/support/SameScene.h"
#include "tests/support/Scaled.h"
#include "tests/support/Texts.h"

#include <algorithm>

namespace vrn::test {

namespace {

const Grammar& grammar() {
    static const Grammar rules = readGrammar(contentOf(std::string(VRN_TEST_DATA) + "/../../docs/grammar.md"));
    return rules;
}

constexpr int textCount = scaled(1500);

} // namespace

TEST(RandomText, knowsTheGrammar) {
    EXPECT_EQ(grammar().rules.size(), 19U);
    EXPECT_EQ(unknownSymbols(grammar()), std::vector<std::string>());
    EXPECT_EQ(grammar().rules.at("statement"),
              (Grammar::Symbols{"comment", "|", "remove", "|", "define", "|", "declare", "|", "with", "|", "assign"}));
    // Tokens come from a function each, which does not read their rules.
    for (const char* token : {"COMMENT", "ID", "TRUE", "FALSE", "NULL", "INT", "REAL", "STRING", "PARENS", "BRACES",
                              "BRACKETS", "index", "components", "numbers", "payload"})
        EXPECT_EQ(std::ranges::count(grammar().tokenRules, token), 1) << token;
}

TEST(RandomText, isTheSameForTheSameSeed) {
    RandomText one(grammar(), 5);
    RandomText same(grammar(), 5);
    RandomText other(grammar(), 6);
    std::string texts;
    std::string others;
    for (int i = 0; i < 20; ++i) {
        const std::string text = one.next({});
        EXPECT_EQ(text, same.next({}));
        texts += text;
        others += other.next({});
    }
    EXPECT_NE(texts, others);
}

// Most texts are valid, and together they use every rule: they test more than the first error.
TEST(RandomText, isMostlyValid) {
    RandomText texts(grammar(), 1);
    std::map<std::string, int> types;
    int validTexts = 0;
    int messages = 0;
    for (int i = 0; i < 500; ++i) {
        const Reading r = readText(String(std::string_view(texts.next({.breakPercent = 0}))));
        validTexts += r.isOk ? 1 : 0;
        messages += static_cast<int>(r.log.size());
        for (const Node& node : r.scene->nodes())
            for (const Input* input : node.inputs()) {
                ++types[attrTypeName(input->type())];
                types["connected"] += input->connection() ? 1 : 0;
                types["referring"] += input->nodeValue() ? 1 : 0;
                types["elements"] += input->type() == AttrType::Array && input->size() > 0 ? 1 : 0;
                types["members"] += input->type() == AttrType::Object && input->size() > 0 ? 1 : 0;
                types["full buffer"] += input->value().count() > 1 ? 1 : 0;
            }
    }
    EXPECT_GT(validTexts, 250);
    EXPECT_GT(messages, 250) << "warnings and errors about types";
    for (i32 i = 0; i < attrTypeCount; ++i)
        types[attrTypeName(static_cast<AttrType>(i))] += 0;
    for (const auto& [type, count] : types)
        EXPECT_GT(count, 0) << type;
}

TEST(RandomText, meansTheSameFromEverySource) {
    const std::vector<std::size_t> blockSizes = allBlockSizes();
    RandomText texts(grammar(), 2);
    for (int i = 0; i < textCount; ++i) {
        // Blanks at the end: near the end of a text, no statement is read by the fast path.
        const std::string text = texts.next({}) + std::string(70, ' ');
        struct Outcome {
            Scene scene;
            std::vector<std::string> reports;
        };
        std::unique_ptr<Outcome> expected;
        withEachSource(text, blockSizes, [&](const std::string& source, auto read) {
            auto found = std::make_unique<Outcome>();
            reportAll(found->scene, read, [&](std::string report) { found->reports.push_back(std::move(report)); });
            if (expected) {
                ASSERT_EQ(found->reports, expected->reports) << source << "\n" << text;
                ASSERT_EQ(firstDifference(expected->scene, found->scene), "") << source << "\n" << text;
            } else {
                ASSERT_EQ(brokenInvariant(found->scene), "") << text;
                expected = std::move(found);
            }
        });
        if (HasFatalFailure())
            return;
    }
}

} // namespace vrn::test
