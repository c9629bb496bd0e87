// A command of `vrn` as data: what help, completions and manual pages say of it, and what it does.
#pragma once

#include "scene/core/Types.h"

#include <functional>
#include <limits>
#include <string>
#include <variant>
#include <vector>

namespace vrn::cli {

// What a value names, so that a shell can complete it.
enum class Completion { Nothing, File, Scene, Folder, Command };

// One option or argument, and the variable that takes its value and holds its default.
struct Option {
    using Target = std::variant<bool*, std::string*, vor::u64*, double*, std::vector<std::string>*>;

    std::string names; // `--format`, `-i,--in-place`; without dashes it is an argument, known by its place
    std::string help;  // what it does, on one line
    Target target;
    std::string value{};                // what stands for the value in a text; not for bool
    std::vector<std::string> choices{}; // if only these are taken
    Completion completion = Completion::Nothing;
    vor::u64 most = std::numeric_limits<vor::u64>::max(); // of a whole number
    bool isRequired = false;

    // Each of the names by itself.
    [[nodiscard]] std::vector<std::string> nameList() const;

    // What the variable holds, as text; empty for a flag or a list.
    [[nodiscard]] std::string defaultText() const;

    [[nodiscard]] bool isArgument() const { return names[0] != '-'; }
    [[nodiscard]] bool isFlag() const { return std::holds_alternative<bool*>(target); }
    [[nodiscard]] bool isList() const { return std::holds_alternative<std::vector<std::string>*>(target); }
};

struct Command {
    std::string name;
    std::string what;    // what it is for, on one line
    std::string example; // lines of a shell
    std::vector<Option> options{};
    std::string details{};      // anything more that its help should say
    std::function<int()> run{}; // does it and returns the exit status; owns the variables of the options
    std::string exitStatuses{}; // what they mean, if not what they mean to most

    [[nodiscard]] std::string exitStatusText() const;
};

// The option `--color` of the commands that print in colour; `when` holds its default, `auto`.
void addColorOption(std::vector<Option>& options, std::string& when);

} // namespace vrn::cli
