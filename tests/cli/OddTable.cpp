// The commands completion and man with a table of commands whose text is full of characters that are special to shells
// and roff.
#include "cli/commands/Commands.h"

#include <string>

namespace vrn::cli {

namespace {

struct Values {
    std::string first;
    std::vector<std::string> rest;
    bool isInPlace = false;
    std::string mode = "fast";
    double scale = 0.1;
    std::string folder;
};
Values values;

Command oddCommand() {
    Command command{.name = "odd",
                    .what = "Don't [ever]: use \"this\" \\ that `way` $HOME",
                    .example = "vrn odd 'a b' | tr ' ' '\\n'\n.hidden ~ ^"};
    command.details = ".PP is no macro\n'br is none either\n\nA list:\n  -i   indented\n  .x   \\fBnot bold";
    command.options.push_back(
        {.names = "FIRST", .help = "a file", .target = &values.first, .completion = Completion::File});
    command.options.push_back({.names = "REST",
                               .help = "folders",
                               .target = &values.rest,
                               .completion = Completion::Folder,
                               .isRequired = true});
    command.options.push_back(
        {.names = "-i,--in-place", .help = "Don't [ever]: \\ `x` $HOME", .target = &values.isInPlace});
    command.options.push_back(
        {.names = "-m,--mode", .help = "How", .target = &values.mode, .value = "A:B", .choices = {"fast", "slow"}});
    command.options.push_back({.names = "--scale", .help = "By how much", .target = &values.scale, .value = "X"});
    command.options.push_back({.names = "--folder",
                               .help = "Where to",
                               .target = &values.folder,
                               .value = "FOLDER",
                               .completion = Completion::Folder});
    return command;
}

} // namespace

std::vector<Command> allCommands() { return {oddCommand(), completionCommand(), manCommand()}; }

} // namespace vrn::cli

// `completion SHELL` or `man COMMAND`.
int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    for (const vrn::cli::Command& command : vrn::cli::allCommands())
        if (command.name == argv[1]) {
            *std::get<std::string*>(command.options[0].target) = argv[2];
            return command.run();
        }
    return 2;
}
