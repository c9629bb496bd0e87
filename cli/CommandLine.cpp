#include "cli/CommandLine.h"

#include "cli/Console.h"
#include "scene/core/TextEncoding.h"

#include <CLI/CLI.hpp>

namespace vrn::cli {

namespace {

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

std::string refuseEmpty(const std::string& value) { return value.empty() ? "the name is empty" : ""; }

// What the library has to know of an option besides its name, by what it sets.
struct Adder {
    CLI::App& app;
    const Option& option;

    CLI::Option* operator()(bool* target) const { return app.add_flag(option.names, *target, option.help); }
    CLI::Option* operator()(vor::u64* target) const {
        return app.add_option(option.names, *target, option.help)
            ->capture_default_str()
            ->check(CLI::Range(vor::u64(0), option.most));
    }
    CLI::Option* operator()(double* target) const {
        return app.add_option(option.names, *target, option.help)
            ->capture_default_str()
            ->check(CLI::Range(0.0, std::numeric_limits<double>::max()));
    }
    CLI::Option* operator()(std::string* target) const {
        return text(app.add_option(option.names, *target, option.help));
    }
    CLI::Option* operator()(std::vector<std::string>* target) const {
        return text(app.add_option(option.names, *target, option.help));
    }

    CLI::Option* text(CLI::Option* added) const {
        added->transform(unshield);
        if (!option.choices.empty())
            added->check(CLI::IsMember(option.choices));
        else if (option.completion != Completion::Nothing)
            added->check(refuseEmpty);
        return added;
    }
};

void add(CLI::App& app, const Option& option) {
    CLI::Option* added = std::visit(Adder{app, option}, option.target);
    added->required(option.isRequired);
    if (!option.value.empty())
        added->type_name(option.value);
    else if (option.isArgument())
        added->type_name("");
}

std::string examples(const std::vector<Command>& commands) {
    std::string text = "Examples:\n";
    for (const Command& command : commands)
        text += "  " + command.example.substr(0, command.example.find('\n')) + '\n';
    return text + "\nvrn COMMAND --help tells more.\n";
}

std::string footer(const Command& command) {
    std::string text = command.details.empty() ? std::string() : command.details + "\n\n";
    std::string example = "  " + command.example;
    for (std::size_t at = 0; (at = example.find('\n', at)) != std::string::npos; at += 3)
        example.insert(at + 1, "  ");
    return text + "Example:\n" + example + "\n\n" +
           (command.exitStatuses.empty() ? exitStatuses : command.exitStatuses);
}

int misused(const std::string& reason) {
    printError("vrn: " + std::string(vor::escapeForTerminal(reason).view()) + "\nvrn --help tells more.\n");
    return exitTrouble;
}

} // namespace

int runCommandLine(const std::vector<Command>& commands, int argc, char** argv) {
    CLI::App app(programPurpose, "vrn");
    app.set_version_flag("--version", "vrn " VRN_VERSION);
    app.set_help_flag("-h,--help", "Show this help");
    app.require_subcommand(0, 1);
    app.footer(examples(commands));
    for (const Command& command : commands) {
        CLI::App* added = app.add_subcommand(command.name, command.what);
        added->footer(footer(command));
        for (const Option& option : command.options)
            add(*added, option);
    }
    try {
        app.parse(shielded(argc, argv));
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return misused(error.what());
    }
    for (const Command& command : commands)
        if (app.got_subcommand(command.name))
            return command.run();
    return misused("a command is missing");
}

} // namespace vrn::cli
