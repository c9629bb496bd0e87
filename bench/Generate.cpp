// Writes the input files of the benchmarks: generate FOLDER. Deterministic.
//
// mesh.vrn       1,000,000 points with six decimals and 2,000,000 triangles, two lists on one line each
// mesh_wrap.vrn  the same numbers, with a line break every eight elements
// mesh_rt.vrn    points as the shortest text that reads back as the same float
// mesh_mix.vrn   points of any sign, magnitude and length; indices in random order
// doubles.vrn    3,000,000 reals with 17 digits
// int8.vrn, int16.vrn, int64.vrn   6,000,000 integers of all lengths of the type
// rgba8.vrn      1,500,000 colours of four bytes
// payload.vrn    16 MB of data, compressed
// graph.vrn      200,000 nodes with five values and a connection each: 53 MB
// graph_1mb.vrn  3,800 such nodes, which fit in the cache
// *.json         the same numbers and nodes, for JSON readers
#include "scene/core/NumberText.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <libdeflate.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace vor;

namespace {

constexpr std::size_t side = 1000;

std::string fixed(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.6f", value);
    return text;
}

std::string shortest(float value) {
    char text[realTextCapacity];
    return std::string(writeReal(value, text));
}

std::vector<double> wavyGrid() {
    std::vector<double> points;
    for (std::size_t y = 0; y < side; ++y)
        for (std::size_t x = 0; x < side; ++x) {
            const double u = static_cast<double>(x) / side;
            const double v = static_cast<double>(y) / side;
            points.insert(points.end(), {10 * u - 5, 0.3 * std::sin(25 * u) * std::cos(19 * v), 10 * v - 5});
        }
    return points;
}

std::vector<std::size_t> triangles() {
    std::vector<std::size_t> indices;
    for (std::size_t y = 0; y < side; ++y)
        for (std::size_t x = 0; x < side; ++x) {
            const std::size_t a = y * side + x;
            const std::size_t right = y * side + (x + 1) % side;
            const std::size_t below = (y + 1) % side * side + x;
            const std::size_t opposite = (y + 1) % side * side + (x + 1) % side;
            indices.insert(indices.end(), {a, right, opposite, a, opposite, below});
        }
    return indices;
}

template <class Values, class Write>
std::string list(const Values& values, const char* separator, std::size_t wrapAfter, Write write) {
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i != 0)
            text += wrapAfter != 0 && i % wrapAfter == 0 ? "\n  " : separator;
        text += write(values[i]);
    }
    return text;
}

void writeMesh(const std::string& path, const std::string& points, const std::string& indices) {
    std::ofstream(path) << "# version: 1\nmesh grid;\ngrid.points = vec3f[" << side * side << "] {" << points
                        << "};\ngrid.indices = int32[" << 6 * side * side << "] {" << indices << "};\n";
}

void writeMeshes(const std::string& folder) {
    const std::vector<double> points = wavyGrid();
    const std::vector<std::size_t> indices = triangles();
    const auto number = [](std::size_t i) { return std::to_string(i); };
    const auto inFloat = [](double value) { return shortest(static_cast<float>(value)); };
    writeMesh(folder + "/mesh.vrn", list(points, " ", 0, fixed), list(indices, " ", 0, number));
    writeMesh(folder + "/mesh_wrap.vrn", list(points, " ", 24, fixed), list(indices, " ", 8, number));
    writeMesh(folder + "/mesh_rt.vrn", list(points, " ", 0, inFloat), list(indices, " ", 0, number));
    std::ofstream(folder + "/mesh.json") << "{\"points\":[" << list(points, ",", 0, fixed) << "],\"indices\":["
                                         << list(indices, ",", 0, number) << "]}\n";

    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> exponent(-4, 5);
    std::vector<std::string> any(points.size());
    for (std::string& text : any) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.6g", (random() % 2 ? 1 : -1) * std::pow(10, exponent(random)));
        text = buffer;
    }
    std::vector<std::size_t> shuffled(indices.size());
    for (std::size_t& index : shuffled)
        index = random() % (side * side);
    writeMesh(folder + "/mesh_mix.vrn", list(any, " ", 0, [](const std::string& text) { return text; }),
              list(shuffled, " ", 0, number));
}

void writeBuffer(const std::string& path, const char* type, std::size_t count, const std::string& body) {
    std::ofstream(path) << "data d;\nd.values = " << type << '[' << count << "] {" << body << "};\n";
}

void writeDoubles(const std::string& folder) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> uniform(-1000, 1000);
    std::vector<double> values(3000000);
    for (double& value : values)
        value = uniform(random);
    writeBuffer(folder + "/doubles.vrn", "double", values.size(), list(values, " ", 0, [](double value) {
                    char text[64];
                    std::snprintf(text, sizeof text, "%.17g", value);
                    return std::string(text);
                }));
}

// Integers with a random number of bits, so that all lengths occur.
template <class Integer> void writeIntegers(const std::string& path, const char* type, std::size_t components) {
    std::mt19937_64 random(4);
    std::vector<long long> values(6000000);
    for (long long& value : values) {
        value = static_cast<Integer>(static_cast<Integer>(random()) >> (random() % (8 * sizeof(Integer))));
    }
    writeBuffer(path, type, values.size() / components,
                list(values, " ", 0, [](long long value) { return std::to_string(value); }));
}

void writePayload(const std::string& folder) {
    std::mt19937_64 random(5);
    std::string bytes(16 << 20, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) // similar neighbours, as in an image
        bytes[i] = static_cast<char>((i / 64 % 256) + (random() % 8));
    libdeflate_compressor* compressor = libdeflate_alloc_compressor(6);
    std::string stream(libdeflate_zlib_compress_bound(compressor, bytes.size()), '\0');
    stream.resize(libdeflate_zlib_compress(compressor, bytes.data(), bytes.size(), stream.data(), stream.size()));
    libdeflate_free_compressor(compressor);
    std::string hex = ".";
    for (const char c : stream) {
        hex += "0123456789ABCDEF"[static_cast<unsigned char>(c) >> 4];
        hex += "0123456789ABCDEF"[c & 15];
    }
    writeBuffer(folder + "/payload.vrn", "byte", bytes.size(), hex);
}

void writeGraph(const std::string& path, std::size_t nodes) {
    const char* kinds[] = {"light", "material", "camera", "instance"};
    std::mt19937_64 random(2);
    const auto real = [&](double scale) {
        char text[64];
        std::snprintf(text, sizeof text, "%.4g", scale * static_cast<double>(random() % 1000000) / 1e6);
        return std::string(text);
    };
    std::ofstream vrn(path + ".vrn");
    std::ofstream json(path + ".json");
    vrn << "# version: 1\n";
    json << "{\"nodes\":[\n";
    for (std::size_t i = 0; i < nodes; ++i) {
        const std::string kind = kinds[i % 4];
        const std::string name = kind + std::to_string(i);
        const std::size_t to = random() % nodes;
        const std::string target = kinds[to % 4] + std::to_string(to);
        const std::string colour[] = {real(1), real(1), real(1)};
        const std::string place[] = {real(100), real(100), real(100)};
        const std::string intensity = "1" + std::string(".") + std::to_string(random() % 1000);
        const std::string samples = std::to_string(random() % 512);
        vrn << kind << ' ' << name << ";\n"
            << name << ".color = rgba(" << colour[0] << ' ' << colour[1] << ' ' << colour[2] << ");\n"
            << name << ".intensity = " << intensity << ";\n"
            << name << ".position = vec3(" << place[0] << ' ' << place[1] << ' ' << place[2] << ");\n"
            << name << ".samples = " << samples << ";\n"
            << name << ".label = \"node number " << i << "\";\n"
            << name << ".target |= " << target << ".out;\n";
        json << "{\"type\":\"" << kind << "\",\"name\":\"" << name << "\",\"color\":[" << colour[0] << ',' << colour[1]
             << ',' << colour[2] << "],\"intensity\":" << intensity << ",\"position\":[" << place[0] << ',' << place[1]
             << ',' << place[2] << "],\"samples\":" << samples << ",\"label\":\"node number " << i << "\",\"target\":\""
             << target << ".out\"}" << (i + 1 == nodes ? "\n" : ",\n");
    }
    json << "]}\n";
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const std::string folder = argv[1];
    writeMeshes(folder);
    writeDoubles(folder);
    writeIntegers<signed char>(folder + "/int8.vrn", "char", 1);
    writeIntegers<short>(folder + "/int16.vrn", "int16", 1);
    writeIntegers<long long>(folder + "/int64.vrn", "int64", 1);
    writeIntegers<unsigned char>(folder + "/rgba8.vrn", "rgba8", 4);
    writePayload(folder);
    writeGraph(folder + "/graph", 200000);
    writeGraph(folder + "/graph_1mb", 3800);
}
