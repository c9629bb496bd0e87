#include "convert/shared/Losses.h"

namespace vrn::convert {

Loss& Losses::ofKind(std::string_view what) {
    std::string kind(what);
    if (const auto known = kinds_.find(kind); known != kinds_.end())
        return losses_[known->second];
    if (losses_.size() >= maxKinds && kind != otherKinds)
        return ofKind(otherKinds);
    kinds_.emplace(kind, losses_.size());
    return losses_.emplace_back(Loss{.what = std::move(kind)});
}

} // namespace vrn::convert
