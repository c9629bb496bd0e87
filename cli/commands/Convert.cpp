#include "cli/commands/Commands.h"
#include "cli/commands/Conversion.h"

#include <memory>

namespace vrn::cli {

namespace {

std::vector<std::string> unitNames() {
    std::vector<std::string> names;
    for (const Unit& unit : units)
        names.emplace_back(unit.name);
    return names;
}

void addPlacementOptions(std::vector<Option>& list, ConvertOptions& options) {
    const std::vector<std::string> axes = {"X", "Y", "Z"};
    list.push_back({.names = "--up",
                    .help = "The axis of IN that points up, instead of what IN says",
                    .target = &options.up,
                    .value = "AXIS",
                    .choices = axes});
    list.push_back({.names = "--units",
                    .help = "The unit of length of IN, instead of what IN says",
                    .target = &options.units,
                    .value = "UNIT",
                    .choices = unitNames()});
    list.push_back(
        {.names = "--scale", .help = "Scale the scene in addition", .target = &options.scale, .value = "FACTOR"});
    list.push_back({.names = "--to-up",
                    .help = "The axis of OUT that points up (.obj, .ply, .stl)",
                    .target = &options.toUp,
                    .value = "AXIS",
                    .choices = axes});
    list.push_back({.names = "--to-units",
                    .help = "The unit of length of OUT (.obj, .ply, .stl)",
                    .target = &options.toUnits,
                    .value = "UNIT",
                    .choices = unitNames()});
}

void addFormatOptions(std::vector<Option>& list, ConvertOptions& options) {
    list.push_back({.names = "-o,--output",
                    .help = "The file to write; all other files are read, into one scene",
                    .target = &options.out,
                    .value = "OUT",
                    .completion = Completion::File});
    list.push_back({.names = "--from",
                    .help = "The format of IN instead of its extension, such as obj",
                    .target = &options.from,
                    .value = "FORMAT"});
    list.push_back({.names = "--to",
                    .help = "The format of OUT instead of its extension, such as glb",
                    .target = &options.to,
                    .value = "FORMAT"});
    list.push_back(
        {.names = "--ascii", .help = "Write .ply and .stl as text instead of binary", .target = &options.isAscii});
    list.push_back({.names = "--triangulate",
                    .help = "Turn the polygons of models into triangles",
                    .target = &options.isTriangulated});
}

void addImageOptions(std::vector<Option>& list, ConvertOptions& options) {
    list.push_back(
        {.names = "--embed", .help = "Put the image files of textures into OUT", .target = &options.images.isEmbedded});
    list.push_back({.names = "--copy-textures",
                    .help = "Copy the image files of textures to DIR, where OUT then refers to them",
                    .target = &options.images.copyTo,
                    .value = "DIR",
                    .completion = Completion::File});
    list.push_back({.names = "--extract-textures",
                    .help = "Write embedded images to files in DIR",
                    .target = &options.images.extractTo,
                    .value = "DIR",
                    .completion = Completion::File});
}

void addLimitOptions(std::vector<Option>& list, ConvertOptions& options) {
    list.push_back({.names = "--strict", .help = "Write nothing if anything is lost", .target = &options.isStrict});
    list.push_back({.names = "--losses",
                    .help = "How losses are reported",
                    .target = &options.losses,
                    .value = "FORMAT",
                    .choices = {"text", "json"}});
    list.push_back({.names = "--max-memory",
                    .help = "The memory for reading models, in MiB; 0: 2048 and 16 times the file",
                    .target = &options.maxMemory,
                    .value = "MIB"});
    list.push_back({.names = "--timeout",
                    .help = "The time for reading a model, in seconds; 0: 60 of the processor and one for each MiB",
                    .target = &options.timeout,
                    .value = "SECONDS"});
}

} // namespace

Command convertCommand() {
    const auto options = std::make_shared<ConvertOptions>();
    Command command{.name = "convert",
                    .what = "Convert a scene from or to another format",
                    .example = "vrn convert examples/character.vrn character.glb\nvrn convert chair.obj chair.json\n"
                               "vrn convert a.obj b.fbx -o both.vrn",
                    .run = [options] { return convertFiles(*options); }};
    command.options.push_back({.names = "FILE",
                               .help = "IN and OUT; or, with -o, any number of files to read. - is standard input or "
                                       "output, with --from and --to",
                               .target = &options->files,
                               .completion = Completion::File,
                               .isRequired = true});
    addFormatOptions(command.options, *options);
    addPlacementOptions(command.options, *options);
    addImageOptions(command.options, *options);
    addLimitOptions(command.options, *options);
    addReadingOptions(command.options, options->scenes);
    command.details = "The file extensions determine the formats. Read: .vrn, .gltf, .glb, .obj, .ply, .stl, .fbx,\n"
                      ".dae and many more. Written: " +
                      convert::writableExtensions() +
                      ".\n"
                      "What the format of OUT cannot express is omitted and reported, one line a kind. A scene\n"
                      "with errors is not converted.";
    return command;
}

} // namespace vrn::cli
