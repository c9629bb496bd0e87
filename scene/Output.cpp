#include "scene/Output.h"

#include "scene/Input.h"
#include "scene/Link.h"
#include "scene/Node.h"
#include "scene/SlabPool.h"

namespace vor::velmo_sdk::impl {

Output::~Output() {
    while (connections_)
        connections_->input()->disconnect();
}

String Output::label() const { return node_.name() + "." + name_; }

std::size_t Output::connectionCount() const noexcept {
    std::size_t count = 0;
    for (const Link* link = connections_; link; link = link->next())
        ++count;
    return count;
}

} // namespace vor::velmo_sdk::impl
