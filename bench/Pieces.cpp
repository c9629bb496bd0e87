// Measures the components of the reader separately: bench_pieces [options of Google Benchmark]
#include "impl/Reader.h"
#include "impl/lexer/FileLexer.h"
#include "impl/lexer/StringLexer.h"
#include "impl/numbers/NumberFiller.h"
#include "scene/Scene.h"

#include <benchmark/benchmark.h>
#include <random>
#include <string>

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

// Kinds of statements; %d is the number of the statement.
const std::pair<const char*, const char*> statements[] = {
    {"declarations", "light light%d;\n"},
    {"reals", "n.intensity = 1.%d;\n"},
    {"integers", "n.samples = %d;\n"},
    {"strings", "n.label = \"node number %d\";\n"},
    {"vectors", "n.position = vec3(65.42 93.5 %d);\n"},
    {"references", "n.other = n;\n"},
    {"connections", "n.target |= n.out;\n"},
    {"elements", "n.values[*] = %d;\n"},
    {"members", "n.a.b.c = %d;\n"},
    {"comments", "# number %d\n"},
};

String thousand(const char* format) {
    std::string text = "t n;\n";
    char line[100];
    for (int i = 0; i < 1000; ++i) {
        std::snprintf(line, sizeof line, format, i);
        text += line;
    }
    return std::string_view(text);
}

void scan(Lexer& lexer) {
    for (Token::Type type = Token::Type::Id; type > Token::Type::Invalid; benchmark::DoNotOptimize(type)) {
        lexer.startStatement();
        type = lexer.nextToken().type;
    }
}

void scanString(benchmark::State& state, const char* format) {
    const String text = thousand(format);
    for (auto _ : state) {
        StringLexer lexer(text);
        scan(lexer);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.len()) * state.iterations());
}

void scanFile(benchmark::State& state, const char* format) {
    const String text = thousand(format);
    for (auto _ : state) {
        FileLexer lexer(File::fromMemory(text));
        scan(lexer);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.len()) * state.iterations());
}

void parse(benchmark::State& state, const char* format) {
    const String text = thousand(format);
    for (auto _ : state) {
        Scene scene;
        bool isOk = parseString(&scene, text);
        benchmark::DoNotOptimize(isOk);
    }
    state.SetItemsProcessed(1000 * state.iterations());
}

template <class Number> void fill(benchmark::State& state, InstructionSet set) {
    if (set > instructionSet())
        return state.SkipWithError("not supported by this processor");
    std::mt19937_64 random(1);
    std::string text;
    constexpr std::size_t count = 4000;
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = static_cast<unsigned long>(random() % 128);
        text += std::is_floating_point_v<Number> ? "0." + std::to_string(100000 + number) : std::to_string(number);
        text += ' ';
    }
    std::vector<std::byte> block(count * sizeof(Number));
    for (auto _ : state) {
        auto filler = NumberFiller::make<Number>(block, set);
        filler.take(text);
        filler.finish();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(count) * state.iterations());
}

void findNode(benchmark::State& state) {
    Scene scene;
    std::vector<String> names;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        names.push_back("node" + String(static_cast<u64>(i)));
        scene.createNode("t", names.back());
    }
    std::shuffle(names.begin(), names.end(), std::mt19937(1));
    std::size_t i = 0;
    for (auto _ : state) {
        auto* found = scene.findNode(names[i++ % names.size()]);
        benchmark::DoNotOptimize(found);
    }
}

void findInput(benchmark::State& state) {
    Scene scene;
    Node* node = scene.createNode("t", "n");
    std::vector<String> names;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        names.push_back("input" + String(static_cast<u64>(i)));
        node->createInput(names.back(), velmo_sdk::AttrType::Real);
    }
    std::size_t i = 0;
    for (auto _ : state) {
        auto* found = node->input(names[i++ % names.size()]);
        benchmark::DoNotOptimize(found);
    }
}

template <class Number> void registerNumbers(const std::string& name) {
    const std::pair<const char*, InstructionSet> sets[] = {{"baseline", InstructionSet::Baseline},
                                                           {"vector128", InstructionSet::Vector128},
                                                           {"avx2", InstructionSet::Avx2},
                                                           {"avx512", InstructionSet::Avx512}};
    for (const auto& [setName, set] : sets)
        benchmark::RegisterBenchmark(("numbers/" + name + "/" + setName).c_str(), fill<Number>, set);
}

} // namespace

int main(int argc, char** argv) {
    for (const auto& [name, format] : statements) {
        benchmark::RegisterBenchmark((std::string("scan/") + name).c_str(), scanString, format);
        benchmark::RegisterBenchmark((std::string("scan_file/") + name).c_str(), scanFile, format);
        benchmark::RegisterBenchmark((std::string("parse/") + name).c_str(), parse, format);
    }
    registerNumbers<i8>("int8");
    registerNumbers<u8>("uint8");
    registerNumbers<i16>("int16");
    registerNumbers<u16>("uint16");
    registerNumbers<i32>("int32");
    registerNumbers<u32>("uint32");
    registerNumbers<i64>("int64");
    registerNumbers<u64>("uint64");
    registerNumbers<float>("float");
    registerNumbers<double>("double");
    benchmark::RegisterBenchmark("find_node", findNode)->RangeMultiplier(100)->Range(100, 1000000);
    benchmark::RegisterBenchmark("find_input", findInput)->RangeMultiplier(10)->Range(1, 1000);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
