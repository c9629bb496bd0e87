// The names of the scene library that the converter uses, declared once for all of vrn::convert.
#pragma once

#include "scene/AttrData.h"
#include "scene/Catalogue.h"
#include "scene/Node.h"
#include "scene/core/String.h"
#include "scene/core/Types.h"

namespace vrn::convert {

using vor::i16;
using vor::i32;
using vor::i64;
using vor::i8;
using vor::u16;
using vor::u32;
using vor::u64;
using vor::u8;

using vor::String;

using vor::velmo_sdk::AttrData;
using vor::velmo_sdk::AttrType;
using vor::velmo_sdk::DataType;
using vor::velmo_sdk::ElementLayout;
using vor::velmo_sdk::ValueKind;

using vor::velmo_sdk::impl::Catalogue;
using vor::velmo_sdk::impl::Input;
using vor::velmo_sdk::impl::InputType;
using vor::velmo_sdk::impl::Node;
using vor::velmo_sdk::impl::NodeType;
using vor::velmo_sdk::impl::Output;
using vor::velmo_sdk::impl::Scene;

} // namespace vrn::convert
