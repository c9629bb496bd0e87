// A catalogue as Python holds it.
#pragma once

#include "scene/Catalogue.h"

#include <memory>

namespace vrn::python {

struct SharedCatalogue {
    std::shared_ptr<const vor::velmo_sdk::impl::Catalogue> types;
};

} // namespace vrn::python
