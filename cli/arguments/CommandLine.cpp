#include "cli/arguments/CommandLine.h"

#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "scene/core/NumberText.h"
#include "scene/core/SimilarNames.h"
#include "scene/core/TextEncoding.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <sstream>

namespace vrn::cli {

namespace {

// CLI11 parses `[a,b]` as a list, and an argument with a leading dash as an option even after a `--` that follows a
// positional argument. Both can be file names, so such arguments are prefixed while CLI11 parses them.
constexpr char shieldPrefix = '\x01';

std::string unshield(std::string argument) {
    if (argument.starts_with(shieldPrefix))
        argument.erase(0, 1);
    return argument;
}

// The arguments in the form that CLI11 parses: without the program's name, in reverse order.
std::vector<std::string> shielded(int argc, char** argv) {
    std::vector<std::string> arguments;
    bool areFiles = false; // after `--`
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (!areFiles && argument == "--")
            areFiles = true;
        else if (argument.starts_with('[') || (areFiles && argument.starts_with('-')))
            arguments.push_back(shieldPrefix + argument);
        else
            arguments.push_back(argument);
    }
    std::ranges::reverse(arguments);
    return arguments;
}

// An empty value is usually an unset shell variable.
std::string refuseEmpty(const std::string& value) { return value.empty() ? messages::valueEmpty : ""; }

CLI::Validator wholeNumber(vor::u64 max) {
    const bool isLimited = max != std::numeric_limits<vor::u64>::max();
    const std::string range = isLimited ? "0 to " + std::to_string(max) : "";
    const auto check = [max, range](std::string& text) -> std::string {
        unsigned long long number = 0;
        if (vor::parseInteger(text, number, vor::String::Radix::Auto) && number <= max)
            return {};
        const vor::String reason = range.empty()
                                       ? vor::String::format(messages::notWholeNumber, text.c_str())
                                       : vor::String::format(messages::notInRange, text.c_str(), range.c_str());
        return reason.buf();
    };
    return {check, range};
}

CLI::Validator positiveNumber() {
    const auto check = [](std::string& text) -> std::string {
        double number = 0;
        const bool isGood = vor::parseReal(text, number) && number >= 0 && number <= std::numeric_limits<double>::max();
        return isGood ? std::string() : vor::String::format(messages::notPositive, text.c_str()).buf();
    };
    return {check, ""};
}

// Unlike CLI::IsMember, suggests what is similar.
CLI::Validator oneOf(const std::vector<std::string>& choices) {
    std::string list;
    for (const std::string& choice : choices)
        list += (list.empty() ? "" : ", ") + choice;
    const auto check = [choices, list](const std::string& text) -> std::string {
        if (std::ranges::find(choices, text) != choices.end())
            return {};
        vor::SimilarNames similar(text);
        for (const std::string& choice : choices)
            similar.consider(choice);
        return vor::String::format(messages::notAChoice, text.c_str(), list.c_str(), similar.question().c_str()).buf();
    };
    return {check, '{' + list + '}'};
}

// Registers an option by the type of its variable.
struct Adder {
    CLI::App& app;
    const Option& option;

    CLI::Option* operator()(bool* target) const { return app.add_flag(option.names, *target, option.help); }
    CLI::Option* operator()(vor::u64* target) const {
        return app.add_option(option.names, *target, option.help)
            ->capture_default_str()
            ->check(wholeNumber(option.max));
    }
    CLI::Option* operator()(double* target) const {
        return app.add_option(option.names, *target, option.help)->capture_default_str()->check(positiveNumber());
    }
    CLI::Option* operator()(std::string* target) const {
        return text(app.add_option(option.names, *target, option.help));
    }
    CLI::Option* operator()(std::vector<std::string>* target) const {
        return text(app.add_option(option.names, *target, option.help))->allow_extra_args(option.isArgument());
    }
    CLI::Option* operator()(Steps* target) const {
        const auto append = [target, names = option.names](const std::string& value) {
            target->push_back({names, value});
        };
        return text(app.add_option_function<std::string>(option.names, append, option.help)->trigger_on_parse());
    }

    CLI::Option* text(CLI::Option* added) const {
        added->transform(unshield);
        if (!option.choices.empty())
            added->check(oneOf(option.choices));
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
    return text + "\nSee vrn COMMAND --help for the options of a command.\n";
}

std::string footer(const Command& command) {
    std::string text = command.details.empty() ? std::string() : command.details + "\n\n";
    std::string example = "  " + command.example;
    for (std::size_t at = 0; (at = example.find('\n', at)) != std::string::npos; at += 3)
        example.insert(at + 1, "  ");
    return text + "Example:\n" + example + "\n\nExit status: " + command.exitStatusText();
}

// `help` is the command that prints the help.
int misused(const std::string& reason, const std::string& help = "vrn --help") {
    printError("vrn: " + std::string(vor::escapeForTerminal(reason).view()) + "\nSee " + help + ".\n");
    return exitTrouble;
}

// How to supply a required option.
std::string remedy(const Option& option) {
    return option.completion == Completion::Scene ? "name a file, or - for standard input" : option.help;
}

// The missing required options of a command and how to supply them; empty if none is missing.
std::string missingOptions(const CLI::App& app, const Command& command) {
    std::string text;
    for (const Option& option : command.options) {
        if (!option.isRequired || app.count(option.nameList()[0]) != 0)
            continue;
        text += text.empty() ? "" : "; ";
        text += vor::String::format(messages::optionRequired, option.names.c_str(), remedy(option).c_str()).view();
    }
    return text;
}

// The message for a command that does not exist; empty if the arguments name none.
std::string unknownCommand(const CLI::App& app, const std::vector<Command>& commands) {
    const std::vector<std::string> unexpected = app.remaining();
    const auto name =
        std::ranges::find_if(unexpected, [](const std::string& argument) { return !argument.starts_with('-'); });
    if (name == unexpected.end())
        return {};
    vor::SimilarNames similar(*name);
    for (const Command& command : commands)
        similar.consider(command.name);
    const std::string names = similar.list("'");
    const std::string question = names.empty() ? "" : ", did you mean " + names + '?';
    return vor::String::format(messages::unknownCommand, name->c_str(), question.c_str()).buf();
}

int misused(const CLI::App& app, const std::vector<Command>& commands, const CLI::ParseError& error) {
    for (const Command& command : commands)
        if (app.got_subcommand(command.name)) {
            std::string reason;
            if (dynamic_cast<const CLI::RequiredError*>(&error))
                reason = missingOptions(*app.get_subcommand(command.name), command);
            return misused(reason.empty() ? error.what() : reason, "vrn " + command.name + " --help");
        }
    const bool isExtra = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
    const std::string reason = isExtra ? unknownCommand(app, commands) : "";
    return misused(reason.empty() ? error.what() : reason);
}

// Adds the options of a command only once it is given: adding those of all commands is a tenth of the time of a short
// run.
void addCommands(CLI::App& app, const std::vector<Command>& commands) {
    for (const Command& command : commands) {
        CLI::App* added = app.add_subcommand(command.name, command.what);
        added->preparse_callback([added, &command](std::size_t) {
            added->footer(footer(command));
            for (const Option& option : command.options)
                add(*added, option);
        });
    }
}

} // namespace

int runCommandLine(const std::vector<Command>& commands, int argc, char** argv) {
    CLI::App app(programPurpose, "vrn");
    app.set_version_flag("--version", "vrn " VRN_VERSION);
    app.set_help_flag("-h,--help", "Show this help");
    app.require_subcommand(0, 1);
    app.footer(examples(commands));
    addCommands(app, commands);
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
    return misused(messages::noCommand);
}

} // namespace vrn::cli
