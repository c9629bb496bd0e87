#include "scene/core/HashMap.h"
#include "tests/support/Reading.h"

#include <set>

namespace vrn::test {

TEST(Vector, growsToTwoAndThenDoubles) {
    ds::Vector<int> v;
    EXPECT_EQ(v.capacity(), 0U);
    std::vector<std::size_t> capacities;
    for (int i = 0; i < 9; ++i) {
        v.push(i);
        capacities.push_back(v.capacity());
    }
    EXPECT_EQ(capacities, (std::vector<std::size_t>{2, 2, 4, 4, 8, 8, 8, 8, 16}));
    EXPECT_EQ(v.size(), 9U);
    EXPECT_EQ(v[8], 8);
    EXPECT_EQ(v.last(), 8);
    v.pop();
    EXPECT_EQ(v.last(), 7);
    v.clear();
    EXPECT_TRUE(v.isEmpty());
    EXPECT_EQ(v.capacity(), 16U);
    v.reserve(20);
    EXPECT_EQ(v.capacity(), 20U);
}

TEST(Vector, mayPushItsOwnElements) {
    ds::Vector<String> v{"a text that is too long for the handle itself"};
    for (int i = 0; i < 5; ++i)
        v.push(v[0]);
    EXPECT_EQ(v[5], v[0]);
}

TEST(HashMap, findsByTheHashOfATextAlone) {
    ds::HashMap<String, int> map;
    EXPECT_EQ(map.set("one", 1), 1);
    EXPECT_EQ(map.get("one"), 1);
    EXPECT_EQ(map.get("two"), 0) << "a missing value is a default one";
    EXPECT_EQ(&map.get("two"), &(ds::HashMap<String, int>::missing()));
    EXPECT_EQ(map.set("one", 11), 11);
    EXPECT_EQ(map.size(), 1U);
    const auto& bucket = map.bucket(String("one").hash() & 255);
    ASSERT_EQ(bucket.size(), 1U);
    EXPECT_EQ(bucket[0].key(), "one");
    EXPECT_EQ(bucket[0].stored.hash, String("one").hash());
}

TEST(HashMap, keepsTheOrderOfInsertionInABucket) {
    ds::HashMap<String, int> map;
    for (int i = 0; i < 20000; ++i)
        map.set(String(u64(i)), i);
    EXPECT_EQ(map.size(), 20000U);
    std::size_t total = 0;
    for (std::size_t b = 0; b < map.bucketCount; ++b) {
        int last = -1;
        for (const auto& node : map.bucket(b)) {
            EXPECT_EQ(node.key().hash() & 255, b);
            EXPECT_GT(node.value, last);
            last = node.value;
            ++total;
        }
    }
    EXPECT_EQ(total, 20000U);
    for (int i = 0; i < 20000; ++i)
        ASSERT_EQ(map.get(String(u64(i))), i);
    EXPECT_FALSE(map.contains("20000"));
}

TEST(HashMap, findsManyPointersOfOneBucket) {
    std::vector<double> objects(256 * 3000);
    ds::HashMap<double*, int> map;
    for (int i = 0; i < 3000; ++i) // 2,048 bytes apart: all in one bucket
        map.set(&objects[static_cast<std::size_t>(i) * 256], i);
    std::set<std::size_t> used;
    for (std::size_t b = 0; b < map.bucketCount; ++b)
        if (!map.bucket(b).isEmpty())
            used.insert(b);
    EXPECT_EQ(used, std::set<std::size_t>{reinterpret_cast<std::uintptr_t>(objects.data()) & 255});
    for (int i = 0; i < 3000; ++i) {
        ASSERT_EQ(map.get(&objects[static_cast<std::size_t>(i) * 256]), i);
        ASSERT_EQ(map.find(&objects[static_cast<std::size_t>(i) * 256 + 1]), nullptr);
    }
    map.set(objects.data(), 5);
    EXPECT_EQ(map.get(objects.data()), 5);
    EXPECT_EQ(map.size(), 3000U);
}

} // namespace vrn::test
