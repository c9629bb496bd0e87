#include "scene/SlabPool.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <vector>

namespace vrn::test {

using vor::velmo_sdk::impl::SlabPool;

TEST(SlabPool, handsOutPlacesThatDoNotOverlap) {
    SlabPool pool(88);
    std::vector<char*> places;
    for (int i = 0; i < 20000; ++i) { // several slabs
        places.push_back(static_cast<char*>(pool.allocate()));
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(places.back()) % 8, 0U);
        std::memset(places.back(), i % 251, 88);
    }
    for (int i = 0; i < 20000; ++i)
        for (int at : {0, 50, 87})
            ASSERT_EQ(static_cast<unsigned char>(places[static_cast<std::size_t>(i)][at]), i % 251);
    for (char* place : places)
        SlabPool::release(place);
}

#if !defined(__SANITIZE_ADDRESS__) // under which each place is memory of its own
TEST(SlabPool, handsOutAgainWhatWasGivenBack) {
    SlabPool pool(40);
    std::set<void*> places;
    for (int i = 0; i < 5000; ++i)
        places.insert(pool.allocate());
    for (void* place : places)
        SlabPool::release(place);
    for (int i = 0; i < 5000; ++i)
        EXPECT_EQ(places.count(pool.allocate()), 1U);
    for (void* place : places)
        SlabPool::release(place);
}
#endif

TEST(SlabPool, maySeeItsObjectsOutliveIt) {
    auto pool = std::make_unique<SlabPool>(24);
    std::vector<void*> places;
    for (int i = 0; i < 30000; ++i)
        places.push_back(pool->allocate());
    for (std::size_t i = 0; i < places.size(); i += 2)
        SlabPool::release(places[i]);
    pool.reset();
    for (std::size_t i = 1; i < places.size(); i += 2) {
        std::memset(places[i], 1, 24);
        SlabPool::release(places[i]);
    }
}

} // namespace vrn::test
