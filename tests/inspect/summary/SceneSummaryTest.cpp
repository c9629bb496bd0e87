#include "inspect/summary/SceneSummary.h"

#include "tests/support/Reading.h"

namespace vrn::test {

TEST(SceneSummary, countsEachThing) {
    const Reading reading = readText("define d; d.x = 1; t a; t b; u c; a.o.p = b; a.l |= b.out; a.f = vec2f[3] {};"
                                     "a.w[1] = 2; c.g = byte[5] {};");
    const inspect::SceneSummary found = inspect::summarise(*reading.scene);
    EXPECT_EQ(found.nodes, 3U);
    EXPECT_EQ(found.definitions, 1U);
    EXPECT_EQ(found.nodesByType, (std::map<std::string, u64>{{"t", 2}, {"u", 1}}));
    EXPECT_EQ(found.inputs, 9U); // x; o, p, l, f, w and its two elements; g
    EXPECT_EQ(found.buffers, 2U);
    EXPECT_EQ(found.bufferElements, 8U);
    EXPECT_EQ(found.bufferBytes, 29U);
    EXPECT_EQ(found.connections, 1U);
    EXPECT_EQ(found.references, 1U);
}

} // namespace vrn::test
