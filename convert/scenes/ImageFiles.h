// Where the images of textures are when a scene is converted: embedded, or files that come along.
//
//     ImageFiles images({.copyTo = "maps"}, "room/scene.glb", losses);
//     images.apply(scene);
//     writeScene(scene, "room/scene.glb", losses, {});
//     images.write();
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/UniqueNames.h"

#include <map>
#include <string>
#include <vector>

namespace vrn::convert {

// Folders are relative to the current one; empty if not wanted.
struct ImageOptions {
    bool isEmbedded = false; // image files become bytes in the scene
    std::string copyTo{};    // image files are copied there
    std::string extractTo{}; // embedded images become files there

    [[nodiscard]] bool isWanted() const { return isEmbedded || !copyTo.empty() || !extractTo.empty(); }
};

class ImageFiles {
public:
    // `output` is the file that will be written.
    ImageFiles(ImageOptions options, const std::string& output, Losses& losses);

    // Changes the textures of a scene, whose paths are relative to the folder of the output. Files that cannot be read
    // or are not PNG, JPEG, WebP or KTX 2 stay where they are, with a loss.
    void apply(Scene& scene);

    // Writes the files that the textures now refer to. Throws FileError and vor::OutputFileError.
    void write() const;

private:
    struct NewFile {
        std::string path;
        std::string bytes;
    };

    void applyTo(Node& texture, const std::string& prefix);
    void embed(Node& texture, const std::string& prefix, const std::string& bytes);
    void refer(Node& texture, const std::string& prefix, const std::string& path) const;
    [[nodiscard]] std::string readImage(const Node& texture, const std::string& file);
    [[nodiscard]] std::string add(const std::string& folder, const std::string& name, std::string bytes);

    ImageOptions options_;
    std::string folder_; // of the output
    Losses& losses_;
    std::vector<NewFile> files_;
    std::map<std::string, std::string> copies_; // new paths by old ones
    UniqueNames names_;
};

} // namespace vrn::convert
