#include "impl/Edit.h"

#include "cli/commands/Commands.h"
#include "cli/files/CatalogueFile.h"
#include "cli/files/SceneArguments.h"
#include "cli/files/TextFile.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/Messages.h"
#include "scene/core/OutputFile.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

namespace vrn::cli {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

struct EditArguments {
    SceneArguments scenes; // the files, and how they are read
    Steps steps;
    std::string output;
    bool isInPlace = false;
};

struct Form {
    const char* option;
    const char* value;
    Edit::Kind kind;
};

constexpr Form forms[] = {
    {"--set", "PATH=VALUE", Edit::Kind::Set},      {"--link", "PATH=SOURCE", Edit::Kind::Link},
    {"--add", "TYPE NAME", Edit::Kind::Add},       {"--rename", "OLD=NEW", Edit::Kind::Rename},
    {"--remove", "NODE|PATH", Edit::Kind::Remove},
};

const Form& formOf(const std::string& option) { return *std::ranges::find(forms, option, &Form::option); }

std::string shown(const Step& step) { return std::string(escapeForTerminal(step.option + ' ' + step.value).view()); }

// The edits of the command line; nullopt, with a report, if one is malformed.
std::optional<std::vector<Edit>> editsOf(const Steps& steps) {
    std::vector<Edit> edits;
    for (const Step& step : steps) {
        const Form& form = formOf(step.option);
        const std::string_view value = step.value;
        const bool hasTwoParts = form.kind != Edit::Kind::Remove;
        const char separator = form.kind == Edit::Kind::Add ? ' ' : '=';
        const std::size_t end = hasTwoParts ? std::min(value.find(separator), value.size()) : value.size();
        if (hasTwoParts && (end == 0 || end + 1 >= value.size())) {
            complain(std::string_view(step.option),
                     String::format(messages::malformedEdit, step.value.c_str(), form.value));
            return std::nullopt;
        }
        const String second = hasTwoParts ? value.substr(end + 1) : std::string_view();
        edits.push_back({form.kind, String(value.substr(0, end)).trim(), second.trim()});
    }
    return edits;
}

// The text that a refusal begins with: the name of the file, and a position in it.
String placed(const TextFile& file, TextPosition place) {
    return String::format("%s:%d:%d", escapeForTerminal(file.displayName()).buf(), place.line, place.column);
}

int refuse(const TextFile& file, const EditRefusal& refusal, const Step& step) {
    const auto& places = refusal.places;
    const String where = places.empty() ? escapeForTerminal(file.displayName()) : placed(file, places.front());
    printError(
        String::format(messages::notEdited, where.buf(), escapeForTerminal(refusal.reason).buf(), shown(step).c_str()));
    for (std::size_t i = 1; i < places.size(); ++i)
        printError(String::format(messages::editedPlace, placed(file, places[i]).buf()));
    return exitErrors;
}

int save(const std::string& path, std::string_view text) {
    try {
        OutputFile output(path);
        output.write(text);
        output.commit();
        return exitOk;
    } catch (const OutputFileError& error) {
        complain(std::string_view(path), strerrordesc_np(error.code().value()));
        return exitTrouble;
    }
}

int deliver(const TextFile& file, const std::string& text, const EditArguments& arguments) {
    if (!arguments.output.empty() && arguments.output != "-")
        return save(arguments.output, text);
    if (!arguments.isInPlace || file.isStandardInput()) {
        print(text);
        return exitOk;
    }
    return text == file.text().view() ? exitOk : save(file.argument().buf(), text);
}

int editFile(const std::string& name, const std::vector<Edit>& edits, const EditArguments& arguments,
             const EditOptions& options) {
    try {
        const TextFile file{std::string_view(name)};
        if (!file.error().isEmpty()) {
            complain(file.displayName(), file.error());
            return exitTrouble;
        }
        const EditResult result = editVrn(file.text(), edits, options);
        if (result.refusal)
            return refuse(file, *result.refusal, arguments.steps[result.refusal->edit]);
        return deliver(file, changedText(file.text(), result.changes), arguments);
    } catch (const std::bad_alloc&) {
        complain(std::string_view(name), messages::outOfMemory);
        return exitTrouble;
    }
}

// Why the options contradict each other, or null.
const char* contradiction(const EditArguments& arguments) {
    if (arguments.steps.empty())
        return messages::noEdits;
    if (arguments.isInPlace && !arguments.output.empty())
        return messages::outputInPlace;
    return !arguments.output.empty() && arguments.scenes.files.size() > 1 ? messages::oneOutput : nullptr;
}

int edit(const EditArguments& arguments) {
    if (const char* reason = contradiction(arguments)) {
        printError(std::string("vrn: ") + reason + '\n');
        return exitTrouble;
    }
    const auto edits = editsOf(arguments.steps);
    if (!edits)
        return exitTrouble;
    const EditOptions options{loadCatalogue(arguments.scenes.types), arguments.scenes.limits};
    int status = exitOk;
    for (const std::string& name : arguments.scenes.files)
        status = std::max(status, editFile(name, *edits, arguments, options));
    return finishOutput() ? status : exitTrouble;
}

void addEdits(std::vector<Option>& options, Steps& steps) {
    constexpr const char* help[] = {
        "Set an input to a value, or to a node to refer to",
        "Connect an input to an output NODE.OUTPUT, or to nothing (null)",
        "Add a node at the end; the type define adds a definition",
        "Rename a node, and all paths and links that name it",
        "Remove a node that no other refers to, or an input with what is below it",
    };
    for (std::size_t i = 0; i < std::size(forms); ++i)
        options.push_back({.names = forms[i].option, .help = help[i], .target = &steps, .value = forms[i].value});
}

} // namespace

Command editCommand() {
    const auto arguments = std::make_shared<EditArguments>();
    Command command{
        .name = "edit",
        .what = "Change values, links and names in scenes, and no other byte",
        .example = "vrn edit --in-place --set cam1.fov=50 --rename cam1=main scene.vrn\n"
                   "vrn edit --add 'light key' --set key.power=60.0 -o lit.vrn scene.vrn",
        .details = "The edits are made in the given order: all of them, or none. An edit that would change\n"
                   "the meaning of other statements is refused. Without --output and --in-place, print\n"
                   "the text.",
        .run = [arguments] { return edit(*arguments); },
        .exitStatuses = "0 all files were edited, 1 an edit is refused, so that its file does not change, 2\n"
                        "invalid arguments or a file that cannot be read or written.\n"};
    command.options.push_back({.names = "FILE",
                               .help = "The scenes to edit; - is standard input",
                               .target = &arguments->scenes.files,
                               .completion = Completion::Scene,
                               .isRequired = true});
    addEdits(command.options, arguments->steps);
    command.options.push_back({.names = "-i,--in-place",
                               .help = "Replace each file that changes, atomically",
                               .target = &arguments->isInPlace});
    command.options.push_back({.names = "-o,--output",
                               .help = "Write the text to this file, atomically; - is standard output",
                               .target = &arguments->output,
                               .value = "OUT",
                               .completion = Completion::File});
    addCatalogueAndLimits(command.options, arguments->scenes);
    return command;
}

} // namespace vrn::cli
