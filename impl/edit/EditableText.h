// EditableText: a text, its statements, and the scene that it reads as.
#pragma once

#include "impl/Edit.h"
#include "impl/edit/Statements.h"

namespace vor::velmo_sdk::impl {

struct EditableText {
    EditableText(const String& text, const EditOptions& options) : statements((prepare(scene, options), text), scene) {}

    static void prepare(Scene& scene, const EditOptions& options) {
        scene.setCatalogue(options.catalogue);
        scene.setLimits(options.limits);
    }

    Scene scene;
    Statements statements;
};

} // namespace vor::velmo_sdk::impl
