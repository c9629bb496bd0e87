#include "scene/AttrData.h"

#include "scene/core/LargeMemory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace vor::velmo_sdk {

// What keeps a block that several values may share, or that is adopted.
struct AttrData::Owners {
    explicit Owners(bool adopts, std::shared_ptr<const void> keeps = nullptr) noexcept
        : isAdopted(adopts), keeper(std::move(keeps)) {}

    std::atomic<u64> count = 1; // of values
    bool isAdopted;             // otherwise the last value frees the memory
    std::shared_ptr<const void> keeper;
};

AttrData::AttrData(const AttrData& other) : kind_(other.kind_) {
    if (!hasBlock()) {
        store_.words[0] = other.store_.words[0];
        store_.words[1] = other.store_.words[1];
        return;
    }
    store_.block = {nullptr, other.store_.block.count, other.joinOwners()};
    if (store_.block.owners || !other.store_.block.memory) {
        store_.block.memory = other.store_.block.memory;
        return;
    }
    allocate(other.store_.block.count);
    // blockSize() is not 0. NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
    std::memcpy(store_.block.memory, other.store_.block.memory, blockSize());
}

AttrData AttrData::zero(AttrType type) noexcept { return {type, 0, 0, hasBlock(type) ? componentCount(type) : 0}; }

AttrData AttrData::boolean(bool value) noexcept { return {AttrType::Bool, 0, value ? u64(1) : 0}; }

AttrData AttrData::integer(i64 value) noexcept { return {AttrType::Int, 0, static_cast<u64>(value)}; }

AttrData AttrData::unsignedInteger(u64 value) noexcept { return {AttrType::UInt, 0, value}; }

AttrData AttrData::real(double value) noexcept { return {AttrType::Real, 0, std::bit_cast<u64>(value)}; }

AttrData AttrData::numbers(AttrType type, std::span<const double> numbers) {
    AttrData data = zero(type);
    const std::span<double> components = data.components();
    std::ranges::copy(numbers.first(std::min(numbers.size(), components.size())), components.begin());
    return data;
}

AttrData AttrData::string(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    AttrData data(AttrType::String, text.size() < inlineBytes ? inlineText : textInBlock);
    char* copy = data.store_.text;
    if (data.hasBlock()) {
        copy = static_cast<char*>(std::malloc(text.size() + 1));
        data.store_.block = {copy, text.size(), nullptr};
        if (!copy)
            throw std::bad_alloc();
    }
    copy[text.copy(copy, text.size())] = '\0';
    return data;
}

AttrData AttrData::array(AttrType elementType) noexcept { return {AttrType::Array, static_cast<i32>(elementType)}; }

AttrData AttrData::vec2(double x, double y) { return numbers(AttrType::Vec2, std::array{x, y}); }

AttrData AttrData::vec3(double x, double y, double z) { return numbers(AttrType::Vec3, std::array{x, y, z}); }

AttrData AttrData::vec4(double x, double y, double z, double w) {
    return numbers(AttrType::Vec4, std::array{x, y, z, w});
}

AttrData AttrData::pos2(double x, double y) { return numbers(AttrType::Pos2, std::array{x, y}); }

AttrData AttrData::pos3(double x, double y, double z) { return numbers(AttrType::Pos3, std::array{x, y, z}); }

AttrData AttrData::quat(double a, double b, double c, double d) {
    return numbers(AttrType::Quat, std::array{a, b, c, d});
}

AttrData AttrData::rgba(double red, double green, double blue, double alpha) {
    return numbers(AttrType::Rgba, std::array{red, green, blue, alpha});
}

AttrData AttrData::mat3(std::span<const double, 9> rows) { return numbers(AttrType::Mat3, rows); }

AttrData AttrData::mat4(std::span<const double, 16> rows) { return numbers(AttrType::Mat4, rows); }

AttrData AttrData::buffer(DataType type, u64 count) {
    AttrData data(AttrType::Buffer, static_cast<i32>(type));
    data.allocate(count);
    return data;
}

AttrData AttrData::adopt(DataType type, u64 count, const void* memory, std::shared_ptr<const void> keeper) {
    const ElementLayout layout = elementLayout(type);
    AttrData data(AttrType::Buffer, static_cast<i32>(type));
    if (count == 0 || layout.elementSize() == 0) {
        data.allocate(count);
    } else if (reinterpret_cast<std::uintptr_t>(memory) % layout.componentSize != 0) {
        data.allocate(count);
        std::memcpy(data.store_.block.memory, memory, data.blockSize());
    } else {
        data.store_.block = {const_cast<void*>(memory), count, new Owners(true, std::move(keeper))};
    }
    return data;
}

AttrData AttrData::share() const {
    std::atomic_ref<Owners*> owners(store_.block.owners);
    if (type() == AttrType::Buffer && store_.block.memory && !owners.load(std::memory_order_acquire)) {
        auto made = std::make_unique<Owners>(false);
        Owners* none = nullptr;
        if (owners.compare_exchange_strong(none, made.get(), std::memory_order_acq_rel))
            (void)made.release();
    }
    return *this;
}

const char* AttrData::asString() const noexcept {
    if (type() != AttrType::String)
        return "";
    return hasBlock() ? static_cast<const char*>(store_.block.memory) : store_.text;
}

std::span<const double> AttrData::components() const noexcept {
    static constexpr double zeros[16] = {};
    const double* first = store_.reals;
    if (hasBlock())
        first = store_.block.memory ? static_cast<const double*>(store_.block.memory) : zeros;
    return {first, componentCount(type())};
}

std::span<double> AttrData::components() {
    const u32 count = componentCount(type());
    if (count != 0 && hasBlock() && !store_.block.memory)
        allocate(count);
    double* first = hasBlock() ? static_cast<double*>(store_.block.memory) : store_.reals;
    return {first, count};
}

AttrType AttrData::elementType() const noexcept {
    return type() == AttrType::Array ? static_cast<AttrType>(subtype()) : AttrType::Null;
}

DataType AttrData::dataType() const noexcept {
    return type() == AttrType::Buffer ? static_cast<DataType>(subtype()) : DataType::Null;
}

std::span<const std::byte> AttrData::bytes() const noexcept {
    if (type() != AttrType::Buffer)
        return {};
    return {static_cast<const std::byte*>(store_.block.memory), blockSize()};
}

std::span<std::byte> AttrData::bytes() {
    if (type() != AttrType::Buffer)
        return {};
    if (!endSharing())
        replaceByCopy(store_.block.count);
    return {static_cast<std::byte*>(store_.block.memory), blockSize()};
}

void AttrData::resize(u64 count) {
    const u64 unit = elementLayout(dataType()).elementSize();
    if (unit == 0 || count == store_.block.count)
        return;
    if (count > std::numeric_limits<std::ptrdiff_t>::max() / unit)
        throw std::bad_alloc();
    if (!endSharing())
        return replaceByCopy(count);
    const u64 before = blockSize();
    const u64 size = count * unit;
    if (size == 0) {
        std::free(std::exchange(store_.block.memory, nullptr));
    } else {
        void* memory = std::realloc(store_.block.memory, size);
        if (!memory)
            throw std::bad_alloc();
        store_.block.memory = memory;
        if (size > before)
            std::memset(static_cast<std::byte*>(memory) + before, 0, size - before);
    }
    store_.block.count = count;
}

u64 AttrData::blockSize() const noexcept {
    if (type() == AttrType::String)
        return store_.block.count + 1;
    const u64 unit = type() == AttrType::Buffer ? elementLayout(dataType()).elementSize() : sizeof(double);
    return store_.block.count * unit;
}

// A zero-filled block; null if it has no bytes.
static void* zeros(u64 size) {
    if (size == 0)
        return nullptr;
    void* memory = std::calloc(size, 1);
    if (!memory)
        throw std::bad_alloc();
    if (size >= 2 * largePage)
        preferLargePages(memory, size);
    return memory;
}

// Allocates the zero-filled block of a value.
void AttrData::allocate(u64 count) {
    store_.block.count = count;
    store_.block.memory = zeros(blockSize());
}

// The owners of the block, if there are several, for a copy that becomes one of them.
AttrData::Owners* AttrData::joinOwners() const noexcept {
    Owners* owners = std::atomic_ref(store_.block.owners).load(std::memory_order_acquire);
    if (owners)
        owners->count.fetch_add(1, std::memory_order_relaxed);
    return owners;
}

void AttrData::leaveOwners() noexcept {
    Owners* owners = store_.block.owners;
    if (owners->count.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    if (!owners->isAdopted)
        std::free(store_.block.memory);
    delete owners;
}

// Ends sharing if all values that shared the block with this one are gone. Returns whether the block may be written.
bool AttrData::endSharing() noexcept {
    Owners* owners = store_.block.owners;
    if (!owners)
        return true;
    if (owners->isAdopted || owners->count.load(std::memory_order_acquire) != 1)
        return false;
    delete std::exchange(store_.block.owners, nullptr);
    return true;
}

// Leaves the block to its other owners. The new one has the first `count` elements and zeros for missing ones.
void AttrData::replaceByCopy(u64 count) {
    const u64 size = count * elementLayout(dataType()).elementSize();
    void* copy = zeros(size);
    if (const u64 kept = std::min(blockSize(), size); kept != 0)
        std::memcpy(copy, store_.block.memory, kept);
    leaveOwners();
    store_.block = {copy, count, nullptr};
}

bool operator==(const AttrData& a, const AttrData& b) noexcept {
    if (a.kind_ != b.kind_)
        return false;
    if (a.type() == AttrType::Bool || a.type() == AttrType::Int || a.type() == AttrType::UInt)
        return a.store_.integer == b.store_.integer;
    if (a.type() == AttrType::String)
        return std::strcmp(a.asString(), b.asString()) == 0;
    const auto mine = a.type() == AttrType::Buffer ? a.bytes() : std::as_bytes(a.components());
    const auto others = b.type() == AttrType::Buffer ? b.bytes() : std::as_bytes(b.components());
    return mine.size() == others.size() && (mine.empty() || std::memcmp(mine.data(), others.data(), mine.size()) == 0);
}

} // namespace vor::velmo_sdk
