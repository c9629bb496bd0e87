// Everything that a program needs to read, walk, change and write scenes:
//
//     #include <vrn/vrn.h>
//
//     vrn::Scene scene;
//     if (!vrn::parseString(&scene, "camera cam1; cam1.fov = 45.0;"))
//         ...
//
// The top of each included header documents its purpose, ownership, threading and complexity.
#pragma once

#include "impl/Edit.h"
#include "impl/Formatter.h"
#include "impl/Reader.h"
#include "impl/SourceMap.h"
#include "scene/AttrData.h"
#include "scene/Catalogue.h"
#include "scene/CatalogueJson.h"
#include "scene/Handle.h"
#include "scene/Scene.h"
#include "scene/SceneJson.h"
#include "scene/VrnWriter.h"
#include "scene/Walk.h"
#include "scene/core/File.h"
#include "scene/core/Log.h"
#include "scene/core/Math.h"
#include "scene/core/NumberText.h"
#include "scene/core/String.h"
#include "scene/core/TextEncoding.h"

// Public names of all headers above: vrn::Scene, vrn::AttrData, vrn::File, vrn::math::VecT.
namespace vrn {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

} // namespace vrn
