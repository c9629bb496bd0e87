#include "cli/arguments/Command.h"

#include "cli/terminal/Console.h"
#include "scene/core/NumberText.h"

#include <sstream>

namespace vrn::cli {

namespace {

struct DefaultText {
    std::string operator()(const bool*) const { return {}; }
    std::string operator()(const std::vector<std::string>*) const { return {}; }
    std::string operator()(const Steps*) const { return {}; }
    std::string operator()(const std::string* text) const { return *text; }
    std::string operator()(const vor::u64* number) const { return std::string(vor::String(*number).view()); }
    std::string operator()(const double* number) const {
        char buffer[vor::realTextCapacity];
        return std::string(vor::writeReal(*number, buffer));
    }
};

} // namespace

std::vector<std::string> Option::nameList() const {
    std::vector<std::string> list;
    std::istringstream rest(names);
    for (std::string name; std::getline(rest, name, ',');)
        list.push_back(name);
    return list;
}

std::string Option::defaultText() const { return std::visit(DefaultText{}, target); }

std::string Command::exitStatusText() const { return exitStatuses.empty() ? vrn::cli::exitStatuses : exitStatuses; }

void addColorOption(std::vector<Option>& options, std::string& when) {
    options.push_back({.names = "--color",
                       .help = "Use colour: auto colours terminals only, unless NO_COLOR is set",
                       .target = &when,
                       .value = "WHEN",
                       .choices = {"auto", "always", "never"}});
}

} // namespace vrn::cli
