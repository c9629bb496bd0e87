// Inputs and outputs by their current names, for texts that use older ones.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

namespace vor::velmo_sdk::impl {

class Scene;
class Catalogue;

// For as long as it lives, this thread's name maps are those of the scene's catalogue. The reader makes
// one for each parse; they nest. `scene` may be null.
class VRN_API NameMapScope {
public:
    explicit NameMapScope(const Scene* scene) noexcept;
    ~NameMapScope();
    NameMapScope(const NameMapScope&) = delete;
    NameMapScope& operator=(const NameMapScope&) = delete;

private:
    const Catalogue* outer_;
};

// The current name of an input or output of a node type; the name itself when it is no old one, when
// the type is unknown, or outside of any NameMapScope.
[[nodiscard]] VRN_API String updateInputName(const String& nodeType, const String& inputName);
[[nodiscard]] VRN_API String updateOutputName(const String& nodeType, const String& outputName);

} // namespace vor::velmo_sdk::impl
