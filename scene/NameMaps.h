// Maps older names of inputs and outputs to the current ones.
//
//     const NameMapScope names(&scene);
//     updateInputName("camera", "fovy")        // "fov" if the scene's catalogue declares that rename
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

namespace vor::velmo_sdk::impl {

class Scene;
class Catalogue;

// Makes the names of the scene's catalogue current for this thread until the scope ends; scopes nest. The reader opens
// one for each parse. `scene` may be null; its catalogue must not be replaced before the scope ends.
class VRN_API NameMapScope {
public:
    explicit NameMapScope(const Scene* scene) noexcept;
    ~NameMapScope();
    NameMapScope(const NameMapScope&) = delete;
    NameMapScope& operator=(const NameMapScope&) = delete;

private:
    const Catalogue* outer_;
};

// The current name of an input or output of a node type. Returns the name itself if it is not an older name, if the
// type is unknown, or outside of any NameMapScope. O(log n).
[[nodiscard]] VRN_API String updateInputName(const String& nodeType, const String& inputName);
[[nodiscard]] VRN_API String updateOutputName(const String& nodeType, const String& outputName);

} // namespace vor::velmo_sdk::impl
