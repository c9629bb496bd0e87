#include "cli/arguments/CommandLine.h"

#include "cli/terminal/Console.h"
#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <sstream>

namespace vrn::cli {

namespace {

// The argument library takes `[a,b]` for a list and what begins with a dash for an option, also behind a `--` that
// follows an argument; but files may be called so. Such arguments are parsed behind a character that is taken off
// again.
constexpr char shield = '\x01';

std::string unshield(std::string argument) {
    if (argument.starts_with(shield))
        argument.erase(0, 1);
    return argument;
}

// The arguments as the library wants them: without the program's name, the last one first.
std::vector<std::string> shielded(int argc, char** argv) {
    std::vector<std::string> arguments;
    bool areFiles = false; // behind `--`
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (!areFiles && argument == "--")
            areFiles = true;
        else if (argument.starts_with('[') || (areFiles && argument.starts_with('-')))
            arguments.push_back(shield + argument);
        else
            arguments.push_back(argument);
    }
    std::ranges::reverse(arguments);
    return arguments;
}

// Mostly the name of a shell's variable that is not set.
std::string refuseEmpty(const std::string& value) { return value.empty() ? "the value is empty" : ""; }

CLI::Validator wholeNumber(vor::u64 most) {
    const bool isLimited = most != std::numeric_limits<vor::u64>::max();
    const std::string range = isLimited ? "0 to " + std::to_string(most) : "";
    const auto check = [most, range](std::string& text) -> std::string {
        unsigned long long number = 0;
        if (vor::parseInteger(text, number, vor::String::Radix::Auto) && number <= most)
            return {};
        return text + " is no whole number" + (range.empty() ? "" : " from " + range);
    };
    return {check, range};
}

CLI::Validator positiveNumber() {
    const auto check = [](std::string& text) -> std::string {
        double number = 0;
        const bool isGood = vor::parseReal(text, number) && number >= 0 && number <= std::numeric_limits<double>::max();
        return isGood ? std::string() : text + " is no number from 0 on";
    };
    return {check, ""};
}

// What the library has to know of an option besides its name, by what it sets.
struct Adder {
    CLI::App& app;
    const Option& option;

    CLI::Option* operator()(bool* target) const { return app.add_flag(option.names, *target, option.help); }
    CLI::Option* operator()(vor::u64* target) const {
        return app.add_option(option.names, *target, option.help)
            ->capture_default_str()
            ->check(wholeNumber(option.most));
    }
    CLI::Option* operator()(double* target) const {
        return app.add_option(option.names, *target, option.help)->capture_default_str()->check(positiveNumber());
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
        else
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
    return text + "Example:\n" + example + "\n\nExit status: " + command.exitStatusText();
}

// `help` is the call that tells more.
int misused(const std::string& reason, const std::string& help = "vrn --help") {
    printError("vrn: " + std::string(vor::escapeForTerminal(reason).view()) + '\n' + help + " tells more.\n");
    return exitTrouble;
}

// What to do about a required option that is not there.
std::string remedy(const Option& option) {
    return option.completion == Completion::Scene ? "name a file, or - for standard input" : option.help;
}

// The required options of a command that are not there, and what to do; empty if there are none.
std::string missing(const CLI::App& app, const Command& command) {
    std::string text;
    for (const Option& option : command.options)
        if (option.isRequired && app.count(option.nameList()[0]) == 0)
            text += (text.empty() ? "" : "; ") + option.names + " is required: " + remedy(option);
    return text;
}

int misused(const CLI::App& app, const std::vector<Command>& commands, const CLI::ParseError& error) {
    for (const Command& command : commands)
        if (app.got_subcommand(command.name)) {
            std::string reason;
            if (dynamic_cast<const CLI::RequiredError*>(&error))
                reason = missing(*app.get_subcommand(command.name), command);
            return misused(reason.empty() ? error.what() : reason, "vrn " + command.name + " --help");
        }
    return misused(error.what());
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
        std::ostringstream text;
        const int status = app.exit(help, text, text);
        print(text.str());
        return finishOutput() ? status : exitTrouble;
    } catch (const CLI::ParseError& error) {
        return misused(app, commands, error);
    }
    for (const Command& command : commands)
        if (app.got_subcommand(command.name))
            return command.run();
    return misused("a command is missing");
}

} // namespace vrn::cli
