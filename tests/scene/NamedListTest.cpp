#include "scene/NamedList.h"

#include <gtest/gtest.h>
#include <vector>

namespace vrn::test {

using vor::String;
using vor::u64;
using vor::velmo_sdk::impl::NamedList;

namespace {

struct Item {
    String name;
    [[nodiscard]] const String& key() const noexcept { return name; }
};

} // namespace

TEST(NamedList, findsItsItemsHoweverMany) {
    std::vector<Item> items(100);
    for (std::size_t i = 0; i < items.size(); ++i)
        items[i].name = "a name of some length " + String(static_cast<u64>(i));
    NamedList<Item, 3> list;
    EXPECT_EQ(list.find("a"), nullptr);
    EXPECT_TRUE(list.items().empty());
    for (std::size_t i = 0; i < items.size(); ++i) {
        list.push(&items[i]);
        ASSERT_EQ(list.size(), i + 1);
        for (std::size_t k = 0; k <= i; ++k) {
            ASSERT_EQ(list.find(items[k].name), &items[k]) << "of " << i + 1;
            ASSERT_EQ(list.items()[k], &items[k]);
        }
        ASSERT_EQ(list.find("a name of some length"), nullptr);
    }
}

TEST(NamedList, isEmptiedFromTheEnd) {
    Item a{"a"};
    Item b{"b"};
    NamedList<Item, 3> list;
    list.push(&a);
    list.pushUnnamed(&b);
    EXPECT_EQ(list.takeLast(), &b);
    EXPECT_EQ(list.takeLast(), &a);
    EXPECT_EQ(list.takeLast(), nullptr);
    list.push(&b);
    EXPECT_EQ(list.find("b"), &b);
}

} // namespace vrn::test
