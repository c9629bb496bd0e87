// The command `vrn`: its arguments, and nothing else.
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/SceneFile.h"

#include <CLI/CLI.hpp>
#include <new>

namespace {

using namespace vrn::cli;

constexpr const char* exitStatuses =
    "Exit status: 0 all read without an error, 1 an error was found, 2 wrong usage or a\n"
    "file that cannot be opened or read (the other files are still dealt with).\n";

void addScenes(CLI::App& command, SceneArguments& scenes) {
    command.add_option("FILE", scenes.files, "Scenes to read; - is standard input")->required();
    command.add_option("--types", scenes.types, "Catalogue of node types (JSON) that new nodes follow")
        ->type_name("CATALOGUE.json");
}

CLI::App* addCommand(CLI::App& app, const char* name, const char* what, const std::string& example) {
    CLI::App* command = app.add_subcommand(name, what);
    command->footer("Example:\n" + example + "\n\n" + exitStatuses);
    return command;
}

int run(int argc, char** argv) {
    CLI::App app("Reads scenes in the VRN text format: checks them, shows them, sums them up.", "vrn");
    app.set_version_flag("--version", "vrn " VRN_VERSION);
    app.set_help_flag("-h,--help", "Show this help");
    app.require_subcommand(1);
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
        ->type_name("");
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
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitOk : exitTrouble;
    }
    if (checkCommand->parsed())
        return check(checkOptions);
    return dumpCommand->parsed() ? dump(dumpOptions) : info(infoOptions);
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
