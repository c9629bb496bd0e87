// Measures upper bounds for the speed of a conventional reader: bench_roof numbers|payload|read FILE.vrn
//
// numbers: fast_float (reals) and std::from_chars (integers) over the lists of a file into preallocated arrays, without
// tokens, a scene, or checks except of the numbers. payload: decodes the hexadecimal digits of a list by table lookup,
// then inflates with libdeflate. read: reads the bytes of the file into new memory.
#include "bench/Process.h"

#include <array>
#include <charconv>
#include <cstring>
#include <fast_float/fast_float.h>
#include <fcntl.h>
#include <libdeflate.h>
#include <memory>
#include <string_view>
#include <unistd.h>

namespace {

struct List {
    std::string_view type;
    std::string_view body;
    std::size_t numbers;
};

std::vector<List> listsOf(std::string_view text) {
    std::vector<List> lists;
    for (std::size_t open = 0; (open = text.find("] {", open)) != std::string_view::npos; ++open) {
        const std::size_t count = text.rfind('[', open) + 1;
        const std::size_t type = text.rfind(' ', count) + 1;
        const std::size_t body = open + 3;
        List list{text.substr(type, count - 1 - type), text.substr(body, text.find('}', body) - body), 0};
        std::from_chars(text.data() + count, text.data() + open, list.numbers);
        list.numbers *= list.type == "vec3f" ? 3 : list.type == "rgba8" ? 4 : 1;
        lists.push_back(list);
    }
    return lists;
}

template <class Number> void readList(std::string_view list, Number* out) {
    const char* end = list.data() + list.size();
    for (const char* at = list.data(); at < end;) {
        while (at < end && *at <= ' ')
            ++at;
        const char* next = at;
        if constexpr (std::is_floating_point_v<Number>) {
            const auto result = fast_float::from_chars(at, end, *out++);
            next = result.ec == std::errc() ? result.ptr : at;
        } else {
            const auto result = std::from_chars(at, end, *out++);
            next = result.ec == std::errc() ? result.ptr : at;
        }
        if (next == at)
            std::exit(1);
        at = next;
    }
}

void readList(const List& list, void* out) {
    if (list.type == "vec3f")
        readList(list.body, static_cast<float*>(out));
    else if (list.type == "double")
        readList(list.body, static_cast<double*>(out));
    else if (list.type == "int32")
        readList(list.body, static_cast<int*>(out));
    else if (list.type == "int64")
        readList(list.body, static_cast<long*>(out));
    else if (list.type == "int16")
        readList(list.body, static_cast<short*>(out));
    else if (list.type == "char")
        readList(list.body, static_cast<signed char*>(out));
    else
        readList(list.body, static_cast<unsigned char*>(out));
}

int numbers(const char* file) {
    const std::string text = vrn::bench::readFile(file);
    const std::vector<List> lists = listsOf(text);
    std::vector<std::vector<char>> arrays;
    for (const List& list : lists)
        arrays.emplace_back(8 * list.numbers, 1);
    const auto read = [&] {
        for (std::size_t i = 0; i < lists.size(); ++i)
            readList(lists[i], arrays[i].data());
    };
    return vrn::bench::measure("roof", file, read, [] {});
}

int payload(const char* file) {
    const std::string text = vrn::bench::readFile(file);
    const List list = listsOf(text).at(0);
    std::array<signed char, 256> digits{};
    digits.fill(-1);
    for (int i = 0; i < 16; ++i)
        digits[static_cast<unsigned char>("0123456789ABCDEF"[i])] = static_cast<signed char>(i);
    std::vector<unsigned char> stream(list.body.size() / 2);
    std::vector<char> bytes(list.numbers, 1);
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    const auto read = [&] {
        const auto* hex = reinterpret_cast<const unsigned char*>(list.body.data()) + 1;
        for (std::size_t i = 0; i < stream.size(); ++i, hex += 2) {
            if ((digits[hex[0]] | digits[hex[1]]) < 0)
                std::exit(1);
            stream[i] = static_cast<unsigned char>(digits[hex[0]] << 4 | digits[hex[1]]);
        }
        if (libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), bytes.data(), bytes.size(),
                                       nullptr) != LIBDEFLATE_SUCCESS)
            std::exit(1);
    };
    return vrn::bench::measure("roof-payload", file, read, [] {});
}

int readBytes(const char* file) {
    std::unique_ptr<char[]> bytes;
    const auto read = [&] {
        const int descriptor = ::open(file, O_RDONLY | O_CLOEXEC);
        const off_t size = ::lseek(descriptor, 0, SEEK_END);
        ::lseek(descriptor, 0, SEEK_SET);
        bytes = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(size));
        if (::read(descriptor, bytes.get(), static_cast<std::size_t>(size)) != size)
            std::exit(1);
        ::close(descriptor);
    };
    return vrn::bench::measure("read", file, read, [&] { bytes.reset(); });
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc == 3 ? argv[1] : "";
    return mode == "numbers"   ? numbers(argv[2])
           : mode == "payload" ? payload(argv[2])
           : mode == "read"    ? readBytes(argv[2])
                               : 2;
}
