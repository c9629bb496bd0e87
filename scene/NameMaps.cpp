#include "scene/NameMaps.h"

#include "scene/Scene.h"

namespace vor::velmo_sdk::impl {

namespace {

thread_local const Catalogue* currentCatalogue = nullptr;

const NodeType* currentType(const String& nodeType) {
    return currentCatalogue ? currentCatalogue->find(nodeType) : nullptr;
}

} // namespace

NameMapScope::NameMapScope(const Scene* scene) noexcept : outer_(currentCatalogue) {
    currentCatalogue = scene ? scene->catalogue() : nullptr;
}

NameMapScope::~NameMapScope() { currentCatalogue = outer_; }

String updateInputName(const String& nodeType, const String& inputName) {
    const NodeType* type = currentType(nodeType);
    return type ? type->currentInputName(inputName) : inputName;
}

String updateOutputName(const String& nodeType, const String& outputName) {
    const NodeType* type = currentType(nodeType);
    return type ? type->currentOutputName(outputName) : outputName;
}

} // namespace vor::velmo_sdk::impl
