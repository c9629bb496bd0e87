// A map of 256 fixed buckets, never rehashed, whose iteration order is part of what it promises:
// bucket 0 to 255, and within a bucket in the order of insertion.
//
//     ds::HashMap<String, int> ages;
//     ages.set("ann", 31);                  // overwrites or appends; returns the stored value
//     ages.get("bob")                       // a static default value when the key is absent
//
// A text key is known by its 64-bit hash alone: the bucket is the low byte of the hash, and the text is
// never compared. A pointer key is known by its value, the bucket being its low byte. Pointers to heap
// objects share few low bytes, so a bucket may grow large: past a few nodes it keeps an index beside
// its nodes, and lookup stays O(1) for any number of keys. Values move when their bucket grows.
#pragma once

#include "scene/core/Hash.h"
#include "scene/core/String.h"
#include "scene/core/Vector.h"

#include <array>
#include <bit>
#include <vector>

namespace vor::ds {

// Positions in one bucket by 64-bit key: open addressing, at most half full.
class BucketIndex {
public:
    // The first position entered for `key` that `isMatch` accepts, or -1.
    template <class IsMatch> [[nodiscard]] i64 find(u64 key, IsMatch isMatch) const {
        for (std::size_t slot = home(key); slots_[slot] != 0; slot = (slot + 1) & (slots_.size() - 1))
            if (isMatch(slots_[slot] - 1))
                return static_cast<i64>(slots_[slot] - 1);
        return -1;
    }

    // Enters a position; there must be room for it.
    void insert(u64 key, std::size_t position) noexcept {
        std::size_t slot = home(key);
        while (slots_[slot] != 0)
            slot = (slot + 1) & (slots_.size() - 1);
        slots_[slot] = position + 1;
    }

    [[nodiscard]] bool hasRoomFor(std::size_t count) const noexcept { return 2 * count <= slots_.size(); }
    [[nodiscard]] bool isEmpty() const noexcept { return slots_.empty(); }

    // Forgets everything and makes room for `count` positions.
    void rebuild(std::size_t count) { slots_ = std::vector<std::size_t>(std::bit_ceil(4 * count)); }

private:
    // Keys of one bucket agree in their low bits.
    [[nodiscard]] std::size_t home(u64 key) const noexcept {
        return static_cast<std::size_t>(keyedHash(key)) & (slots_.size() - 1);
    }

    std::vector<std::size_t> slots_; // position + 1; 0 is free
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

    // The value stored under `key`, or null. Valid until the bucket grows.
    [[nodiscard]] V* find(const K& key) noexcept {
        Bucket& bucket = bucketOf(Key::number(key));
        const i64 at = position(bucket, Key::number(key));
        return at < 0 ? nullptr : &bucket.nodes[static_cast<std::size_t>(at)].value;
    }
    [[nodiscard]] const V* find(const K& key) const noexcept { return const_cast<HashMap*>(this)->find(key); }
    [[nodiscard]] bool contains(const K& key) const noexcept { return find(key) != nullptr; }

    // The value stored under `key`, or missing().
    [[nodiscard]] const V& get(const K& key) const noexcept {
        const V* value = find(key);
        return value ? *value : missing();
    }

    // What a failed lookup yields: one default value for all maps of this type.
    [[nodiscard]] static const V& missing() {
        static const V value{};
        return value;
    }

    // Overwrites the value of a key that is there, otherwise appends a node. Nothing changes when it
    // throws for want of memory.
    V& set(const K& key, V value) {
        if (V* found = find(key))
            return *found = std::move(value);
        const u64 number = Key::number(key);
        Bucket& bucket = bucketOf(number);
        makeRoom(bucket);
        // cppcheck-suppress accessMoved; it was moved only where this is not reached
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
        BucketIndex index; // empty while a search from the front is as quick
    };
    static constexpr std::size_t searchedLinearly = 16;

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

    static void makeRoom(Bucket& bucket) {
        const std::size_t count = bucket.nodes.size() + 1;
        if (count <= searchedLinearly || bucket.index.hasRoomFor(count))
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
