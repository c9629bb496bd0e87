#include "scene/NamedList.h"

#include "scene/NameTable.h"

#include <gtest/gtest.h>
#include <new>
#include <vector>

namespace vrn::test {

using vor::String;
using vor::u32;
using vor::u64;
using vor::velmo_sdk::impl::NamedList;

namespace {

struct Item {
    String name;
    [[nodiscard]] const String& key() const noexcept { return name; }
};

// Items named by a prefix and their index.
std::vector<Item> itemsNamed(const char* prefix, std::size_t count) {
    std::vector<Item> items(count);
    for (std::size_t i = 0; i < count; ++i)
        items[i].name = prefix + String(static_cast<u64>(i));
    return items;
}

} // namespace

template <class List> class NamedListOf : public testing::Test {};
using Lists = testing::Types<NamedList<Item, 1, 3>, NamedList<Item, 6, 12>>;
TYPED_TEST_SUITE(NamedListOf, Lists);

TYPED_TEST(NamedListOf, findsItsItemsHoweverMany) {
    std::vector<Item> items = itemsNamed("a name of some length ", 100);
    TypeParam list;
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
    NamedList<Item, 1, 3> list;
    list.push(&a);
    list.pushUnnamed(&b);
    EXPECT_EQ(list.takeLast(), &b);
    EXPECT_EQ(list.takeLast(), &a);
    EXPECT_EQ(list.takeLast(), nullptr);
    list.push(&b);
    EXPECT_EQ(list.find("b"), &b);
}

// More than 16 items are found through an index, which must not outlive the items that it was built for.
TYPED_TEST(NamedListOf, findsOnlyTheNewItemsOnceItIsRefilled) {
    for (const std::size_t kept : {0U, 1U, 16U, 17U, 39U}) {
        for (const std::size_t added : {1U, 16U, 17U, 40U}) {
            std::vector<Item> old = itemsNamed("old", 40);
            std::vector<Item> others = itemsNamed("new", added);
            TypeParam list;
            for (Item& item : old)
                list.push(&item);
            for (std::size_t i = old.size(); i-- > kept;)
                EXPECT_EQ(list.takeLast(), &old[i]);
            for (Item& item : others)
                list.push(&item);
            for (std::size_t i = 0; i < old.size(); ++i)
                ASSERT_EQ(list.find(old[i].name), i < kept ? &old[i] : nullptr) << i << " of " << kept << "+" << added;
            for (Item& item : others)
                ASSERT_EQ(list.find(item.name), &item) << kept << "+" << added;
        }
    }
}

TEST(NamedList, erasesItemsAnywhere) {
    for (const std::size_t count : {1U, 2U, 5U, 40U})
        for (const std::size_t erased : {std::size_t(0), count / 2, count - 1}) {
            std::vector<Item> items = itemsNamed("n", count);
            NamedList<Item, 2, 4> list;
            for (Item& item : items)
                list.push(&item);
            list.erase(&items[erased]);
            ASSERT_EQ(list.size(), count - 1);
            EXPECT_EQ(list.find(items[erased].name), nullptr);
            for (std::size_t i = 0; i < count; ++i)
                if (i != erased) {
                    EXPECT_EQ(list.find(items[i].name), &items[i]);
                    EXPECT_EQ(list.items()[i < erased ? i : i - 1], &items[i]);
                }
            list.push(&items[erased]);
            EXPECT_EQ(list.find(items[erased].name), &items[erased]);
        }
}

// The index that a list got when it was longer stays in use.
TEST(NamedList, findsWhatIsAddedAfterItGotShorter) {
    for (const std::size_t count : {17U, 18U, 40U})
        for (const std::size_t kept : {0U, 1U, 14U, 15U, 16U}) {
            std::vector<Item> items = itemsNamed("n", count);
            NamedList<Item, 1, 3> list;
            for (Item& item : items)
                list.push(&item);
            for (std::size_t i = kept; i < count; ++i)
                list.erase(&items[i]);
            for (std::size_t i = kept; i < count; ++i) {
                EXPECT_EQ(list.find(items[i].name), nullptr);
                list.push(&items[i]);
                ASSERT_EQ(list.find(items[i].name), &items[i]) << "of " << count << " after " << kept << " were left";
            }
            for (const Item& item : items) {
                list.erase(&item);
                EXPECT_EQ(list.find(item.name), nullptr);
            }
        }
}

TEST(NamedList, holdsAsManyItemsAsItMay) {
    for (const std::size_t named : {0U, 20U}) {
        std::vector<Item> items = itemsNamed("n", 21);
        NamedList<Item, 1, 3, 20> list;
        for (std::size_t i = 0; i < 20; ++i)
            i < named ? list.push(&items[i]) : list.pushUnnamed(&items[i]);
        EXPECT_THROW(list.push(&items[20]), std::bad_alloc);
        EXPECT_THROW(list.pushUnnamed(&items[20]), std::bad_alloc);
        ASSERT_EQ(list.size(), 20U);
        EXPECT_EQ(list.items()[19], &items[19]);
        EXPECT_EQ(list.find("n19"), &items[19]);
        EXPECT_EQ(list.find("n20"), nullptr);
        EXPECT_EQ(list.takeLast(), &items[19]);
        list.push(&items[20]);
        EXPECT_EQ(list.find("n20"), &items[20]);
        EXPECT_EQ(list.find("n19"), nullptr);
    }
}

// An input keeps its index in 30 bits.
static_assert(NamedList<Item, 1, 3>::maxItems == u32(1) << 30);

} // namespace vrn::test
