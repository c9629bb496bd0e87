// A hash map with 256 fixed buckets that guarantees its iteration order: buckets 0 to 255, insertion order within each.
//
//     ds::HashMap<String, int> ages;
//     ages.set("ann", 31);                  // overwrites or appends; returns the stored value
//     ages.get("bob")                       // a static default value if the key is absent
//
// String keys are identified by their 64-bit hash alone; texts are never compared. The bucket is the low byte of the
// hash, or of the address for pointer keys. Addresses of heap objects share few low bytes, so that buckets may become
// large: beyond a few nodes a bucket has an index, and lookup stays O(1). Values move when their bucket grows.
#pragma once

#include "scene/core/Hash.h"
#include "scene/core/String.h"
#include "scene/core/Vector.h"

#include <array>
#include <bit>
#include <vector>

namespace vor::ds {

// Maps 64-bit keys to positions in one bucket, by open addressing with a load factor of at most 1/2.
class BucketIndex {
public:
    // The first position inserted for `key` that `isMatch` accepts, or -1.
    template <class IsMatch> [[nodiscard]] i64 find(u64 key, IsMatch isMatch) const {
        for (std::size_t slot = home(key); slots_[slot] != 0; slot = (slot + 1) & (slots_.size() - 1))
            if (isMatch(slots_[slot] - 1))
                return static_cast<i64>(slots_[slot] - 1);
        return -1;
    }

    // Requires hasRoomFor() one more.
    void insert(u64 key, std::size_t position) noexcept {
        std::size_t slot = home(key);
        while (slots_[slot] != 0)
            slot = (slot + 1) & (slots_.size() - 1);
        slots_[slot] = position + 1;
    }

    [[nodiscard]] bool hasRoomFor(std::size_t count) const noexcept { return 2 * count <= slots_.size(); }
    [[nodiscard]] bool isEmpty() const noexcept { return slots_.empty(); }

    // Removes all positions and reserves capacity for `count`.
    void rebuild(std::size_t count) { slots_ = std::vector<std::size_t>(std::bit_ceil(4 * count)); }

private:
    // The keys of one bucket have the same low byte, hence another hash.
    [[nodiscard]] std::size_t home(u64 key) const noexcept {
        return static_cast<std::size_t>(keyedHash(key)) & (slots_.size() - 1);
    }

    std::vector<std::size_t> slots_; // position + 1, or 0 for a free slot
};

template <class K> struct HashKey;

template <> struct HashKey<String> {
    struct Stored {
        u64 hash;
        String key;
    };
    static u64 number(const String& key) noexcept { return key.hash(); }
    static u64 number(const Stored& stored) noexcept { return stored.hash; }
    static Stored store(const String& key) { return {key.hash(), key}; }
    static const String& key(const Stored& stored) noexcept { return stored.key; }
};

template <class T> struct HashKey<T*> {
    using Stored = T*;
    static u64 number(const T* key) noexcept { return reinterpret_cast<std::uintptr_t>(key); }
    static Stored store(T* key) noexcept { return key; }
    static T* key(Stored stored) noexcept { return stored; }
};

template <class K, class V> class HashMap {
    using Key = HashKey<K>;

public:
    struct Node {
        typename Key::Stored stored;
        V value;
        [[nodiscard]] decltype(auto) key() const noexcept { return Key::key(stored); }
    };
    static constexpr std::size_t bucketCount = 256;

    // The value of `key`, or null. Valid until its bucket grows.
    [[nodiscard]] V* find(const K& key) noexcept {
        Bucket& bucket = bucketOf(Key::number(key));
        const i64 at = position(bucket, Key::number(key));
        return at < 0 ? nullptr : &bucket.nodes[static_cast<std::size_t>(at)].value;
    }
    [[nodiscard]] const V* find(const K& key) const noexcept { return const_cast<HashMap*>(this)->find(key); }
    [[nodiscard]] bool contains(const K& key) const noexcept { return find(key) != nullptr; }

    // The value of `key`, or missing().
    [[nodiscard]] const V& get(const K& key) const noexcept {
        const V* value = find(key);
        return value ? *value : missing();
    }

    // The result of a failed get(): one default value shared by all maps of this type.
    [[nodiscard]] static const V& missing() {
        static const V value{};
        return value;
    }

    // Overwrites the value of `key` or appends a node. Throws std::bad_alloc, with the map unchanged.
    V& set(const K& key, V value) {
        if (V* found = find(key))
            return *found = std::move(value);
        const u64 number = Key::number(key);
        Bucket& bucket = bucketOf(number);
        reserveOne(bucket);
        // cppcheck-suppress accessMoved; the move above is followed by a return
        V& stored = bucket.nodes.push({Key::store(key), std::move(value)}).value;
        if (!bucket.index.isEmpty())
            bucket.index.insert(number, bucket.nodes.size() - 1);
        ++size_;
        return stored;
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

    // The nodes of one bucket, in the order of insertion.
    [[nodiscard]] const Vector<Node>& bucket(std::size_t i) const noexcept { return buckets_[i].nodes; }

private:
    struct Bucket {
        Vector<Node> nodes;
        BucketIndex index; // empty while a linear search is as fast
    };
    static constexpr std::size_t maxSearchedLinearly = 16;

    Bucket& bucketOf(u64 number) noexcept { return buckets_[number & (bucketCount - 1)]; }

    static i64 position(const Bucket& bucket, u64 number) noexcept {
        const auto isMatch = [&](std::size_t i) { return Key::number(bucket.nodes[i].stored) == number; };
        if (!bucket.index.isEmpty())
            return bucket.index.find(number, isMatch);
        for (std::size_t i = 0; i < bucket.nodes.size(); ++i)
            if (isMatch(i))
                return static_cast<i64>(i);
        return -1;
    }

    static void reserveOne(Bucket& bucket) {
        const std::size_t count = bucket.nodes.size() + 1;
        if (count <= maxSearchedLinearly || bucket.index.hasRoomFor(count))
            return;
        BucketIndex index;
        index.rebuild(count);
        for (std::size_t i = 0; i < bucket.nodes.size(); ++i)
            index.insert(Key::number(bucket.nodes[i].stored), i);
        bucket.index = std::move(index);
    }

    std::array<Bucket, bucketCount> buckets_;
    std::size_t size_ = 0;
};

} // namespace vor::ds
