// The reader makes the same changes to the scene of a host for every source of characters. It may ask more than once
// what exists: the fast path for plain statements asks before it leaves a statement to the general path.
#include "impl/Reader.h"
#include "scene/Scene.h"
#include "tests/support/EachSource.h"
#include "tests/support/RandomText.h"
#include "tests/support/Texts.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace vrn::test {

static bool isQuery(const std::string& call) {
    const char* const queries[] = {"findNode(", ".hasInput(", ".input(", "updateInputName("};
    return std::ranges::any_of(queries, [&](const char* query) { return call.find(query) != std::string::npos; });
}

TEST(HostText, makesTheSameChangesFromEverySource) {
#ifdef VRN_SLOW_BUILD
    constexpr int textCount = 200;
#else
    constexpr int textCount = 2000;
#endif
    const std::size_t blockSizes[] = {1, 2, 3, 7, 16, 17, 31, 64, 1000};
    const Grammar grammar = readGrammar(contentOf(std::string(VRN_TEST_DATA) + "/../../docs/grammar.md"));
    RandomText texts(grammar, 3);
    std::size_t callCount = 0;
    for (int i = 0; i < textCount; ++i) {
        // Inputs of this host do not outlive their nodes, which inputs with a pending link must.
        const std::string text = texts.next({.canRemove = false}) + std::string(70, ' ');
        std::vector<std::string> expected;
        withEachSource(text, blockSizes, [&](const std::string& source, auto read) {
            Scene scene;
            calls.clear();
            reportAll(scene, read, [](std::string report) { calls.push_back(std::move(report)); });
            std::erase_if(calls, isQuery);
            if (expected.empty())
                expected = calls;
            ASSERT_EQ(calls, expected) << source << "\n" << text;
        });
        if (HasFatalFailure())
            return;
        callCount += expected.size();
    }
    EXPECT_GT(callCount, std::size_t(textCount) * 10) << "most texts do something";
}

} // namespace vrn::test
