// The memory of a scene's objects, and the index of its nodes.
#pragma once

#include "scene/InputExtras.h"
#include "scene/NameTable.h"
#include "scene/Scene.h"
#include "scene/SlabPool.h"

namespace vor::velmo_sdk::impl {

struct Scene::Storage {
    SlabPool nodes{sizeof(Node)};
    SlabPool inputs{sizeof(Input)};
    SlabPool extras{sizeof(Input::Extras)};
    SlabPool contents{sizeof(Input::Content)};
    SlabPool outputs{sizeof(Output)};
    NameTable<Node> byName;
};

} // namespace vor::velmo_sdk::impl
