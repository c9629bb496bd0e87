#include "convert/shared/Losses.h"

namespace vrn::convert {

void Losses::warn(std::string_view text) {
    std::string kind;
    bool isInside = false;
    for (const char c : text) {
        isInside = (isInside || c == '(') && c != ')';
        if (!isInside && !String::isDigit(c))
            kind += c;
    }
    Loss& loss = ofKind(kind);
    loss.isWarning = true;
    if (loss.count++ == 0)
        loss.first = text;
}

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
