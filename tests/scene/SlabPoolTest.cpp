#include "scene/SlabPool.h"

#include "scene/Scene.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <thread>
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

#if !defined(__SANITIZE_ADDRESS__) && !VRN_CLANG_ADDRESS_SANITIZER // under which each place is memory of its own
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

// Scenes that are read one after another use the same memory.
TEST(SpareSlabs, areUsedAgain) {
    using namespace vor::velmo_sdk::impl;
    releaseSpareMemory();
    for (const std::size_t size : {smallSlab, mediumSlab}) {
        void* first = takeSlab(size);
        void* second = takeSlab(size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % slabBlock, 0U);
        EXPECT_NE(first, second);
        std::memset(first, 1, size);
        giveSlab(first, size);
        EXPECT_EQ(takeSlab(size), first);
        giveSlab(first, size);
        giveSlab(second, size);
    }
    void* large = takeSlab(largeSlab);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large) % largeSlab, 0U) << "a huge page";
    std::memset(large, 1, largeSlab);
    giveSlab(large, largeSlab);
    releaseSpareMemory();
}

TEST(SpareSlabs, areLimited) {
    using namespace vor::velmo_sdk::impl;
    releaseSpareMemory();
    constexpr std::size_t limit = (8 << 20) / mediumSlab;
    std::vector<void*> slabs;
    for (std::size_t i = 0; i < limit + 5; ++i)
        slabs.push_back(takeSlab(mediumSlab));
    for (void* slab : slabs)
        giveSlab(slab, mediumSlab);
    // Those within the limit come back, the last one first.
    for (std::size_t i = limit; i-- > 0;) {
        void* const slab = takeSlab(mediumSlab);
        EXPECT_EQ(slab, slabs[i]);
        std::free(slab);
    }
}

// A scene may be destroyed on another thread, and after the variables of its own.
TEST(SpareSlabs, mayBeGivenBackByAnyThread) {
    using namespace vor::velmo_sdk::impl;
    auto scene = std::make_unique<Scene>();
    std::thread([&] {
        for (int i = 0; i < 5000; ++i)
            (void)scene->createNode("t", "n" + vor::String(static_cast<vor::u64>(i)));
        thread_local std::unique_ptr<Scene> last; // destroyed after what is constructed later
        last = std::make_unique<Scene>();
        (void)last->createNode("t", "n");
        Scene().createNode("t", "n");
        giveSlab(takeSlab(smallSlab), smallSlab); // a leak if the thread kept it
    }).join();
    EXPECT_EQ(scene->nodeCount(), 5000U);
    scene.reset();
}

} // namespace vrn::test
