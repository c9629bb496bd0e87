#include "cli/commands/Commands.h"
#include "cli/shell/ManualPage.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

namespace vrn::cli {

namespace {

struct ManOptions {
    std::string command; // empty for the program
    std::string folder;  // empty for standard output
};

// The requested pages; empty if there is no such command.
std::vector<ManualPage> pages(const ManOptions& options) {
    const std::vector<Command> commands = allCommands();
    std::vector<ManualPage> found;
    if (options.command.empty())
        found.push_back(programPage(commands));
    const bool isAll = options.command.empty() && !options.folder.empty();
    for (const Command& command : commands)
        if (isAll || command.name == options.command)
            found.push_back(commandPage(command));
    return found;
}

int printPages(const std::vector<ManualPage>& pages) {
    for (const ManualPage& page : pages)
        print(page.text);
    return finishOutput() ? exitOk : exitTrouble;
}

int writePages(const std::vector<ManualPage>& pages, const std::string& folder) {
    for (const ManualPage& page : pages) {
        const std::string path = folder + '/' + page.name + ".1";
        errno = 0;
        std::ofstream file(path, std::ios::binary);
        file << page.text;
        file.close();
        if (!file) {
            complain(std::string_view(path), strerrordesc_np(errno));
            return exitTrouble;
        }
    }
    return exitOk;
}

int man(const ManOptions& options) {
    const std::vector<ManualPage> found = pages(options);
    if (found.empty()) {
        complain(std::string_view(options.command), messages::unknownPage);
        return exitTrouble;
    }
    return options.folder.empty() ? printPages(found) : writePages(found, options.folder);
}

} // namespace

Command manCommand() {
    const auto options = std::make_shared<ManOptions>();
    Command command{.name = "man",
                    .what = "Print the manual page of a command, or of vrn",
                    .example = "vrn man check | man -l -\nvrn man --write ~/.local/share/man/man1",
                    .run = [options] { return man(*options); }};
    command.options.push_back({.names = "COMMAND",
                               .help = "The command; if omitted, print the page of vrn itself",
                               .target = &options->command,
                               .completion = Completion::Command});
    command.options.push_back({.names = "--write",
                               .help = "Write the page, or without COMMAND all pages, to files in this existing folder",
                               .target = &options->folder,
                               .value = "FOLDER",
                               .completion = Completion::Folder});
    return command;
}

} // namespace vrn::cli
