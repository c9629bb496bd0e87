// The command `vrn`: its arguments, and nothing else.
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/SceneFile.h"
#include "scene/core/TextEncoding.h"

#include <CLI/CLI.hpp>
#include <new>

namespace {

using namespace vrn::cli;

constexpr const char* exitStatuses =
    "Exit status: 0 all read without an error, 1 an error was found, 2 wrong usage or a\n"
    "file that cannot be opened or read (the other files are still dealt with).\n";

// The argument library takes `[a,b]` for a list, but a file may be called so: such arguments are parsed
// behind a character that is taken off again.
constexpr char shield = '\x01';

std::string unshield(std::string argument) {
    if (argument.starts_with(shield))
        argument.erase(0, 1);
    return argument;
}

// The arguments as the library wants them: without the program's name, the last one first.
std::vector<std::string> shielded(int argc, char** argv) {
    std::vector<std::string> arguments;
    for (int i = argc - 1; i > 0; --i)
        arguments.push_back((*argv[i] == '[' ? std::string(1, shield) : std::string()) + argv[i]);
    return arguments;
}

void addScenes(CLI::App& command, SceneArguments& scenes) {
    command.add_option("FILE", scenes.files, "Scenes to read; - is standard input")->required()->transform(unshield);
    command.add_option("--types", scenes.types, "Catalogue of node types (JSON) that new nodes follow")
        ->transform(unshield)
        ->check([](const std::string& name) { return name.empty() ? "the name is empty" : ""; })
        ->type_name("CATALOGUE.json");
    command.add_option("--max-array", scenes.limits.arrayElements, "How many elements one array may have")
        ->capture_default_str()
        ->check(CLI::Range(vor::u64(0), vor::u64(1) << 30))
        ->type_name("COUNT");
    command
        .add_option("--max-unnamed", scenes.limits.unnamedElements,
                    "How many elements a text may make by naming one behind them")
        ->capture_default_str()
        ->check(CLI::Range(vor::u64(0), vor::u64(1) << 60))
        ->type_name("COUNT");
    command.add_option("--max-buffer-bytes", scenes.limits.bufferBytes, "How many bytes one buffer may take")
        ->capture_default_str()
        ->check(CLI::Range(vor::u64(0), vor::u64(1) << 60))
        ->type_name("BYTES");
}

CLI::App* addCommand(CLI::App& app, const char* name, const char* what, const std::string& example) {
    CLI::App* command = app.add_subcommand(name, what);
    command->footer("Example:\n" + example + "\n\n" + exitStatuses);
    return command;
}

int misused(const std::string& reason) {
    printError("vrn: " + std::string(vor::escapeForTerminal(reason).view()) + "\nvrn --help tells more.\n");
    return exitTrouble;
}

int run(int argc, char** argv) {
    CLI::App app("Reads scenes in the VRN text format: checks them, shows them, sums them up.", "vrn");
    app.set_version_flag("--version", "vrn " VRN_VERSION);
    app.set_help_flag("-h,--help", "Show this help");
    app.require_subcommand(0, 1);
    app.footer("Examples:\n"
               "  vrn check scene.vrn                    what is wrong, and where\n"
               "  vrn dump --no-data scene.vrn           the scene as JSON, without the buffers' numbers\n"
               "  vrn info scene.vrn                     how many nodes, inputs, bytes, links\n\n"
               "vrn COMMAND --help tells more.\n");

    CheckOptions checkOptions;
    CLI::App* checkCommand = addCommand(app, "check", "Say what is wrong with scenes, and where",
                                        "  vrn check --werror examples/*.vrn\n"
                                        "  generate-scene | vrn check --format json -");
    addScenes(*checkCommand, checkOptions.scenes);
    checkCommand->add_option("--format", checkOptions.format, "How to say it: text, or json (one line a file)")
        ->check(CLI::IsMember({"text", "json"}))
        ->type_name("FORMAT");
    checkCommand->add_flag("--no-lint", checkOptions.isWithoutLint,
                           "Say nothing of what the reader takes without a word, but may not be meant");
    checkCommand->add_flag("--werror", checkOptions.isWarningError, "Let warnings fail the check, too");

    DumpOptions dumpOptions;
    CLI::App* dumpCommand =
        addCommand(app, "dump", "Print scenes as JSON", "  vrn dump --compact scene.vrn | jq '.nodes[].name'");
    addScenes(*dumpCommand, dumpOptions.scenes);
    dumpCommand->add_flag("--compact", dumpOptions.isCompact, "One line a file");
    dumpCommand->add_flag("--no-data", dumpOptions.isWithoutData, "Leave out the numbers of buffers");

    InfoOptions infoOptions;
    CLI::App* infoCommand = addCommand(app, "info", "Sum scenes up for people", "  vrn info examples/first_scene.vrn");
    addScenes(*infoCommand, infoOptions.scenes);

    try {
        app.parse(shielded(argc, argv));
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return misused(error.what());
    }
    if (checkCommand->parsed())
        return check(checkOptions);
    if (dumpCommand->parsed())
        return dump(dumpOptions);
    return infoCommand->parsed() ? info(infoOptions) : misused("a command is missing");
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const UnusableCatalogue&) {
        return exitTrouble;
    } catch (const std::bad_alloc&) {
        printError("vrn: out of memory\n");
        return exitTrouble;
    } catch (const std::exception& error) {
        printError(std::string("vrn: ") + error.what() + "\n");
        return exitTrouble;
    }
}
