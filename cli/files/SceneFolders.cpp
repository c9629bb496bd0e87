#include "cli/files/SceneFolders.h"

#include "cli/terminal/Messages.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace vrn::cli {

namespace fs = std::filesystem;

namespace {

using Scenes = std::vector<std::pair<fs::path, vor::String>>; // and the reason why they cannot be read

vor::String reason(const std::error_code& error) { return strerrordesc_np(error.value()); }

// A dangling link counts as a file, so that it is reported.
bool isFile(const fs::directory_entry& entry) {
    std::error_code ignored;
    const fs::file_type type = entry.status(ignored).type();
    return type == fs::file_type::regular || type == fs::file_type::not_found || type == fs::file_type::none ||
           type == fs::file_type::unknown;
}

bool isHidden(const fs::path& path) { return path.filename().native().starts_with('.'); }

// Appends the scenes and folders in one folder.
void list(const fs::path& folder, Scenes& scenes, std::vector<fs::path>& folders) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path& path = entry->path();
        if (isHidden(path))
            continue;
        std::error_code unknown;
        const bool isFolder = !entry->is_symlink(unknown) && entry->is_directory(unknown);
        if (unknown)
            scenes.emplace_back(path, reason(unknown));
        else if (isFolder)
            folders.push_back(path);
        else if (path.extension() == ".vrn" && isFile(*entry))
            scenes.emplace_back(path, vor::String());
    }
    if (error)
        scenes.emplace_back(folder, reason(error));
}

Scenes scenesBelow(const fs::path& folder) {
    Scenes scenes;
    std::vector<fs::path> folders{folder};
    while (!folders.empty()) {
        const fs::path next = std::move(folders.back());
        folders.pop_back();
        list(next, scenes, folders);
    }
    std::ranges::sort(scenes, {}, &Scenes::value_type::first);
    return scenes;
}

} // namespace

std::vector<NamedScene> expandFolders(const std::vector<std::string>& arguments) {
    std::vector<NamedScene> all;
    for (const std::string& argument : arguments) {
        std::error_code ignored;
        if (argument == "-" || !fs::is_directory(argument, ignored)) {
            all.push_back({argument});
            continue;
        }
        const Scenes scenes = scenesBelow(argument);
        for (const auto& [path, trouble] : scenes)
            all.push_back({path.native(), trouble});
        if (scenes.empty())
            all.push_back({argument, messages::noSceneInFolder});
    }
    return all;
}

} // namespace vrn::cli
