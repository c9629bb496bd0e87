// The least that reading numbers can cost with the usual parsers: bench_roof FILE.vrn
//
// fast_float (reals) and std::from_chars (integers) over the lists of a text into arrays that are there
// already; no tokens, no checks, no scene.
#include "bench/Process.h"

#include <charconv>
#include <fast_float/fast_float.h>
#include <string_view>

template <class Number, class Read> static void readList(std::string_view list, std::vector<Number>& out, Read read) {
    const char* at = list.data();
    const char* end = at + list.size();
    for (std::size_t i = 0; i < out.size(); ++i) {
        while (at != end && *at <= ' ')
            ++at;
        at = read(at, end, out[i]);
    }
}

static std::string_view listBehind(const std::string& text, const char* head) {
    const std::size_t begin = text.find('{', text.find(head)) + 1;
    return std::string_view(text).substr(begin, text.find('}', begin) - begin);
}

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const std::string text = vrn::bench::readFile(argv[1]);
    std::vector<float> points(3000000, 1.0F);
    std::vector<int> indices(6000000, 1);
    const auto read = [&] {
        readList(listBehind(text, "vec3f["), points,
                 [](const char* at, const char* end, float& out) { return fast_float::from_chars(at, end, out).ptr; });
        readList(listBehind(text, "int32["), indices,
                 [](const char* at, const char* end, int& out) { return std::from_chars(at, end, out).ptr; });
    };
    return vrn::bench::measure("roof", argv[1], read, [] {});
}
