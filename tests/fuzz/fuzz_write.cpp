// Any scene, read or created by calls, is written as a text that reads back silently. If the writer has reported no
// losses, the scene read back is the same, and it is written as the same text. The formatter leaves the text alone.
#include "scene/VrnWriter.h"

#include "impl/Formatter.h"
#include "tests/fuzz/Editor.h"
#include "tests/support/SameScene.h"

#include <algorithm>
#include <cstring>

using namespace vrn::fuzz;

namespace {

template <class Number> Number number(Bytes& bytes) {
    u8 raw[sizeof(Number)];
    for (u8& byte : raw)
        byte = bytes.byte();
    Number result;
    std::memcpy(&result, raw, sizeof result);
    return result;
}

// A value of the type of the input.
AttrData anyValue(const Input& input, Bytes& bytes) {
    AttrData value = input.value();
    switch (input.type()) {
    case AttrType::Bool:
        return AttrData::boolean(bytes.byte() % 2 != 0);
    case AttrType::Int:
        return AttrData::integer(number<i64>(bytes));
    case AttrType::UInt:
        return AttrData::unsignedInteger(number<u64>(bytes));
    case AttrType::Real:
        return AttrData::real(number<double>(bytes));
    case AttrType::String:
        return AttrData::string(bytes.text(30));
    case AttrType::Buffer:
        for (std::byte& byte : value.bytes())
            byte = static_cast<std::byte>(bytes.byte());
        return value;
    default:
        for (double& component : value.components())
            component = number<double>(bytes);
        return value;
    }
}

void fill(Input& root, Bytes& bytes) {
    std::vector<Input*> open{&root};
    while (!open.empty() && !bytes.isEmpty()) {
        Input* input = open.back();
        open.pop_back();
        if (input->type() != AttrType::Array && input->type() != AttrType::Object)
            input->assign(anyValue(*input, bytes));
        for (Input* child : input->children())
            open.push_back(child);
    }
}

// Adds to a scene what only a program can create.
void addForeign(Scene& scene, Bytes& bytes) {
    const String name = bytes.text(6);
    if (Node* node = scene.createNode(bytes.text(6), name)) {
        (void)node->createInput(bytes.text(6), AttrType::Real);
        (void)node->createArray("array", bytes.byte() % 2 != 0 ? AttrType::Node : AttrType::Null);
        (void)node->createInput("buffer", AttrType::Buffer)
            ->set(AttrData::buffer(static_cast<DataType>(bytes.byte() % 60), 2));
        node->createInput("link", AttrType::Null)->connect(node->findOutput(bytes.text(6)));
    }
    scene.setFileVersion(bytes.byte());
    scene.setFileTime(bytes.text(6));
    scene.pushFileComment(bytes.text(20));
}

struct Written {
    std::string text;
    std::vector<VrnLoss> losses;
};

Written write(const Scene& scene, const VrnWriterOptions& options) {
    Written written;
    written.losses = writeVrn(scene, options, [&](std::string_view piece) { written.text += piece; });
    return written;
}

// Whether the log reports success and only what the scene itself causes: comments with an invalid version, and nodes of
// type `with`.
bool isQuiet(std::string_view log) {
    while (!log.empty()) {
        const std::string_view line = log.substr(0, log.find('\n') + 1);
        if (line != "read\n" && line.find("Failed to parse VRN version comment") == std::string_view::npos &&
            line.find("; a new one of type") == std::string_view::npos)
            return false;
        log.remove_prefix(line.size());
    }
    return true;
}

// Whether a loss explains a difference: it is at or below the path of the loss or in a container of it, or the loss is
// a whole node.
bool isTold(std::string_view difference, const std::vector<VrnLoss>& losses) {
    const std::string_view place = difference.substr(0, difference.find(':'));
    return std::ranges::any_of(losses, [&](const VrnLoss& loss) {
        const std::string_view path = loss.path.view();
        return place.starts_with(path) || path.starts_with(place) || place.starts_with("node ") ||
               path.find('.') == path.npos;
    });
}

void check(const Scene& scene, const VrnWriterOptions& options, bool isFromText) {
    const Written first = write(scene, options);
    std::string formatted;
    formatVrn(String(std::string_view(first.text)), {.column = options.column},
              [&](std::string_view piece) { formatted += piece; });
    if (formatted != first.text)
        fail("formatted differently: " + formatted + "\nafter: " + first.text);
    Scene again;
    const std::string log = logOf([&] { return parseString(&again, String(std::string_view(first.text))); });
    if (scene.catalogue()) // adds and renames inputs
        return;
    if (!isQuiet(log))
        fail(log + first.text);
    for (const VrnLoss& loss : first.losses)
        if (isFromText && std::string_view(loss.what).find("NaN") == std::string_view::npos)
            fail(std::string(loss.path.view()) + ": " + loss.what + "\n" + first.text);
    const std::string found = vrn::test::firstDifference(scene, again);
    if (!found.empty() && !isTold(found, first.losses))
        fail(found + "\n" + first.text);
    if (!first.losses.empty())
        return;
    const Written second = write(again, options);
    if (second.text != first.text || !second.losses.empty())
        fail("another text: " + second.text + "\nafter: " + first.text);
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Bytes bytes(asText(data, size));
    const u8 what = bytes.byte();
    const VrnWriterOptions options{.column = what % 4 * 20U, .compressAbove = what % 3 == 0 ? 8U : 1U << 20};
    if (what >= 128) {
        Scene scene;
        limit(scene);
        const std::string log = logOf([&] { return parseString(&scene, bytes.rest()); });
        // A value for an element without a type is reported and then written; no text does that silently.
        const bool isSilent = log.find("expected Null @") == std::string::npos;
        check(scene, options, isSilent);
        return 0;
    }
    const std::string_view values = bytes.text(1000);
    Editor editor(bytes);
    editor.run();
    Bytes more(values);
    if (what % 2 == 0)
        addForeign(editor.scene(), more);
    for (Node& node : editor.scene().nodes())
        for (Input* input : node.inputs())
            fill(*input, more);
    check(editor.scene(), options, false);
    return 0;
}
