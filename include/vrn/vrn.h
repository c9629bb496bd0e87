// All that a program needs to read scenes, walk and change them, and to write them:
//
//     #include <vrn/vrn.h>
//
//     vrn::Scene scene;
//     if (!vrn::parseString(&scene, "camera cam1; cam1.fov = 45.0;"))
//         ...
//
// Each header says at its top what it is for, who owns what, and what it costs.
#pragma once

#include "impl/Formatter.h"
#include "impl/Reader.h"
#include "scene/AttrData.h"
#include "scene/Catalogue.h"
#include "scene/CatalogueJson.h"
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

// Short names for all of it: vrn::Scene, vrn::AttrData, vrn::File, vrn::math::VecT.
namespace vrn {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

} // namespace vrn
