#include "cli/shell/ManualPage.h"

#include "cli/terminal/Console.h"

#include <sstream>
#include <string_view>

namespace vrn::cli {

namespace {

// Escapes a character that is special to roff, or that it would replace with a typographic one.
std::string escaped(char c) {
    switch (c) {
    case '\\':
        return "\\e";
    case '-':
        return "\\-";
    case '"':
        return "\\(dq";
    case '\'':
        return "\\(aq";
    case '`':
        return "\\(ga";
    case '^':
        return "\\(ha";
    case '~':
        return "\\(ti";
    default:
        return std::string(1, c);
    }
}

// For use within a line.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += escaped(c);
    return result;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

// Whole lines. A line with a leading dot would be a macro.
std::string lines(std::string_view text) {
    std::istringstream rest{std::string(text)};
    std::string result;
    for (std::string line; std::getline(rest, line);)
        result += (line.starts_with('.') ? "\\&" : "") + escaped(line) + '\n';
    return result;
}

// Paragraphs, separated by empty lines. A paragraph with an indented line is not filled.
std::string paragraphs(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t end = text.find("\n\n");
        const std::string_view paragraph = text.substr(0, end);
        const bool isLaidOut = paragraph.starts_with(' ') || paragraph.find("\n ") != std::string_view::npos;
        const std::string filled = lines(paragraph);
        result += ".PP\n" + (isLaidOut ? ".nf\n" + filled + ".fi\n" : filled);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 2);
    }
    return result;
}

std::string heading(const std::string& page) {
    std::string capitals = page;
    for (char& c : capitals)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return ".TH " + escaped(capitals) + " 1 \"" VRN_DATE "\" \"vrn " VRN_VERSION "\" \"User Commands\"\n";
}

std::string nameSection(const std::string& page, const std::string& what) {
    return ".SH NAME\n" + escaped(page) + " \\- " + escaped(what) + '\n';
}

std::string exampleSection(const std::string& examples) { return ".SH EXAMPLES\n.EX\n" + lines(examples) + ".EE\n"; }

std::string exitSection(const std::string& statuses) { return ".SH EXIT STATUS\n" + lines(statuses); }

// A tagged paragraph.
std::string entry(const std::string& tag, const std::string& text) { return ".TP\n" + tag + '\n' + lines(text); }

std::string helpEntry() { return entry(bold("-h") + ", " + bold("--help"), "Show a summary of the options"); }

std::string tag(const Option& option) {
    if (option.isArgument())
        return italic(option.names);
    std::string result;
    for (const std::string& name : option.nameList())
        result += (result.empty() ? "" : ", ") + bold(name);
    return option.value.empty() ? result : result + ' ' + italic(option.value);
}

std::string help(const Option& option) {
    std::string text = option.help;
    if (!option.choices.empty()) {
        text += ".\nOne of";
        for (const std::string& choice : option.choices)
            text += (&choice == option.choices.data() ? " " : ", ") + choice;
    }
    const std::string defaultText = option.defaultText();
    return defaultText.empty() ? text : text + ".\nThe default is " + defaultText;
}

std::string synopsis(const Command& command) {
    std::string text = ".SH SYNOPSIS\n" + bold("vrn " + command.name) + " [" + italic("OPTION") + "]...";
    for (const Option& option : command.options)
        if (option.isArgument()) {
            const std::string shown = italic(option.names) + (option.isList() ? "..." : "");
            text += option.isRequired ? ' ' + shown : " [" + shown + ']';
        }
    return text + '\n';
}

std::string options(const Command& command, bool areArguments) {
    std::string text;
    for (const Option& option : command.options)
        if (option.isArgument() == areArguments)
            text += entry(tag(option), help(option));
    return text;
}

std::string argumentSection(const Command& command) {
    const std::string arguments = options(command, true);
    return arguments.empty() ? arguments : ".SH ARGUMENTS\n" + arguments;
}

} // namespace

ManualPage programPage(const std::vector<Command>& commands) {
    std::string text = heading("vrn") + nameSection("vrn", "process scenes in the VRN text scene format");
    text += ".SH SYNOPSIS\n" + bold("vrn") + ' ' + italic("COMMAND") + " [" + italic("OPTION") + "]... [" +
            italic("ARGUMENT") + "]...\n";
    text += ".SH DESCRIPTION\n" + lines(programPurpose) + ".SH COMMANDS\n";
    std::string examples;
    std::string others;
    for (const Command& command : commands) {
        text += entry(bold(command.name), command.what);
        examples += command.example.substr(0, command.example.find('\n')) + '\n';
        others += (others.empty() ? "" : ",\n") + (".BR " + escaped("vrn-" + command.name)) + " (1)";
    }
    text += ".SH OPTIONS\n" + helpEntry() + entry(bold("--version"), "Show the version");
    return {"vrn", text + exitSection(exitStatuses) + exampleSection(examples) + ".SH SEE ALSO\n" + others + '\n'};
}

ManualPage commandPage(const Command& command) {
    const std::string name = "vrn-" + command.name;
    std::string text = heading(name) + nameSection(name, command.what) + synopsis(command);
    text += ".SH DESCRIPTION\n" + lines(command.what + '.') + paragraphs(command.details) + argumentSection(command);
    text += ".SH OPTIONS\n" + options(command, false) + helpEntry();
    return {name, text + exitSection(command.exitStatusText()) + exampleSection(command.example) +
                      ".SH SEE ALSO\n.BR vrn (1)\n"};
}

} // namespace vrn::cli
