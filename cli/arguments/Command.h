// A command of `vrn` as data, from which its argument parser, help, shell completions and manual page are made.
#pragma once

#include "scene/core/Types.h"

#include <functional>
#include <limits>
#include <string>
#include <variant>
#include <vector>

namespace vrn::cli {

// What shells complete a value with.
enum class Completion { Nothing, File, Scene, Folder, Command };

// The values of several options that share a list, in the order of the command line.
struct Step {
    std::string option; // its names
    std::string value;
};
using Steps = std::vector<Step>;

// One option or positional argument, and the variable that holds its default and receives its value.
struct Option {
    using Target = std::variant<bool*, std::string*, vor::u64*, double*, std::vector<std::string>*, Steps*>;

    std::string names; // `--format`, `-i,--in-place`; a positional argument has no dashes
    std::string help;  // one line
    Target target;
    std::string value{};                // placeholder of the value in help; not for bool
    std::vector<std::string> choices{}; // the values allowed; empty for any
    Completion completion = Completion::Nothing;
    vor::u64 max = std::numeric_limits<vor::u64>::max(); // of a whole number
    bool isRequired = false;

    [[nodiscard]] std::vector<std::string> nameList() const;

    // The value of the variable as text; empty for a flag or a list.
    [[nodiscard]] std::string defaultText() const;

    [[nodiscard]] bool isArgument() const { return names[0] != '-'; }
    [[nodiscard]] bool isFlag() const { return std::holds_alternative<bool*>(target); }
    [[nodiscard]] bool isList() const {
        return std::holds_alternative<std::vector<std::string>*>(target) || std::holds_alternative<Steps*>(target);
    }
};

struct Command {
    std::string name;
    std::string what;    // what it does, on one line, in the imperative mood
    std::string example; // shell commands, one a line
    std::vector<Option> options{};
    std::string details{};      // further paragraphs of its help
    std::function<int()> run{}; // returns the exit status; owns the variables of the options
    std::string exitStatuses{}; // replaces the meanings that most commands share

    [[nodiscard]] std::string exitStatusText() const;
};

// Adds the option `--color`; `when` holds its default, `auto`.
void addColorOption(std::vector<Option>& options, std::string& when);

} // namespace vrn::cli
