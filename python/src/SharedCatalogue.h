// A catalogue as Python holds it, with the JSON that it was read from.
#pragma once

#include "scene/Catalogue.h"

#include <memory>
#include <string>

namespace vrn::python {

struct SharedCatalogue {
    std::shared_ptr<const vor::velmo_sdk::impl::Catalogue> types;
    std::string text;
};

} // namespace vrn::python
