// Reads a generated input of n units of one kind, for the tests that count instructions.
#include "impl/Reader.h"
#include "scene/Scene.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

std::string repeat(int n, const std::function<std::string(const std::string&)>& unit) {
    std::string text;
    for (int i = 0; i < n; ++i)
        text += unit(std::to_string(i));
    return text;
}

using Make = std::function<std::string(int)>;

// An input of n equal units, in which `$` is replaced by the number of the unit.
Make units(std::string head, std::string unit, std::string tail = {}) {
    return [=](int n) {
        return head +
               repeat(n,
                      [&](const std::string& i) {
                          std::string text;
                          for (const char c : unit)
                              text += c == '$' ? i : std::string(1, c);
                          return text;
                      }) +
               tail;
    };
}

// A zlib stream of n zeros in a stored block (RFC 1950, 1951), with a space after each byte.
std::string spacedPayload(int n) {
    std::string text = "t n; n.x = byte[" + std::to_string(n) + "] {.";
    const auto byte = [&](int value) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned>(value) & 0xFFU);
        text += digits;
    };
    byte(0x78);
    byte(0x01);
    byte(1); // the last block, stored
    byte(n);
    byte(n >> 8);
    byte(~n);
    byte(~n >> 8);
    for (int i = 0; i < n; ++i)
        byte(0);
    for (const int sum : {n >> 8, n, 0, 1})
        byte(sum);
    return text + "};";
}

const std::map<std::string, Make> workloads = {
    {"declarations", units("", "t n$;\n")},
    {"removals", [](int n) { return units("", "define n$;\n")(n) + units("", "remove n$;\n")(n); }},
    {"scalars_of_one_node", units("t n;", "n.x$ = 1;\n")},
    {"members_of_one_object", units("t n;", "n.o.x$ = 1;\n")},
    {"appended_elements", units("t n;", "n.x[*] = 1;\n")},
    {"elements_by_index", units("t n;", "n.x[$] = 1;\n")},
    {"buffers_of_one_array", units("t n;", "n.x[*] = byte[1] {1};\n")},
    {"arrays_of_one_array", units("t n;", "n.x[*][0] = 1;\n")},
    {"connections", units("t n; t m;", "n.x$ |= m.out;\n")},
    {"outputs_of_one_node", units("t n; t m;", "n.x$ |= m.out$;\n")},
    {"references", units("t n; t m;", "n.x$ = m;\n")},
    {"links_of_many_nodes", units("", "t n$; n$.in |= n$.out; n$.ref = n$;\n")},
    {"comments", units("", "# comment $\n")},
    {"header_comments", units("", "# time: $\n", "t a;\nt b;" + std::string(100, ' '))},
    {"one_list_of_reals", units("t n; n.x = vec3f[1000000] {", "0.1234$ ", "};")},
    {"statements_of_all_kinds", units("t m;", "t n$;\nn$.a = 0.$;\nn$.b = $;\nn$.c = vec3(0.$ 2.5 1e5);\n"
                                              "n$.d = \"text $\";\nn$.e |= m.out;\nn$.f[0].g = rgba(1 0 0.$);\n")},
    {"one_list", units("t n; n.x = int32[1000000] {", "1234 ", "};")},
    {"one_string", units("t n; n.x = \"", "some text ", "\";")},
    {"payload_with_spaces", spacedPayload},
    {"graph", units("", "light light$;\nlight$.color = rgba(0.5123 0.8231 0.25);\nlight$.intensity = 1.537;\n"
                        "light$.position = vec3(12.5 34.25 61.75);\nlight$.samples = 257;\n"
                        "light$.label = \"node number $\";\nlight$.target |= light0.out;\n")},
    {"graph_of_current_nodes", units("", "light light$:\n.color = rgba(0.5123 0.8231 0.25);\n.intensity = 1.537;\n"
                                         ".position = vec3(12.5 34.25 61.75);\n.samples = 257;\n"
                                         ".label = \"node number $\";\n.target |= light0.out;\n")},
    {"graph_with_comments", units("", "# light number $\nlight light$;\nlight$.color = rgba(0.5123 0.8231 0.25);\n"
                                      "light$.intensity = 1.537;\n# its place\n"
                                      "light$.position = vec3(12.5 34.25 61.75);\nlight$.samples = 257;\n"
                                      "light$.label = \"node number $\";\nlight$.target |= light0.out;\n")},
    {"nested_paths", units("t n;", "n.a[$].b = 0.5123;\nn.a[$].c = 257;\n")},
    {"depth_of_one_path", units("t n; n.x", "[0].m", " = 1;")},
    {"warnings", units("t n; n.b = true;", "n.b = 5;\n")},
};

} // namespace

namespace {

class TextSource final : public ByteSource {
public:
    explicit TextSource(std::string_view text) : text_(text) {}
    std::size_t read(char* buffer, std::size_t capacity, String&) override {
        const std::size_t count = text_.copy(buffer, capacity);
        text_.remove_prefix(count);
        return count;
    }

private:
    std::string_view text_;
};

bool read(const Make& make, int n, std::string_view source) {
    const std::string text = make(n);
    const ScopedLogSink silent([](const LogRecord&) {});
    Scene scene;
    if (source == "file")
        return parseVrn(&scene, File::fromSource(std::make_unique<TextSource>(text)), false);
    const String shared = std::string_view(text);
    return source == "memory" ? parseVrn(&scene, File::fromMemory(shared), false) : parseString(&scene, shared);
}

} // namespace

// workload: list the workloads; workload NAME N [file | memory]: read one, as a string or as a File, from a source or
// from memory; workload all N: read all.
int main(int argc, char** argv) {
    bool isOk = true;
    for (const auto& [name, make] : workloads) {
        if (argc < 3)
            std::printf("%s\n", name.c_str());
        else if (std::string("all") == argv[1] || name == argv[1])
            isOk = read(make, std::atoi(argv[2]), argc == 4 ? argv[3] : "") && isOk;
    }
    return isOk ? 0 : 1;
}
