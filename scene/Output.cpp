#include "scene/Output.h"

#include "scene/InputExtras.h"
#include "scene/Node.h"
#include "scene/SlabPool.h"

namespace vor::velmo_sdk::impl {

Node* Output::node() const noexcept { return node_.isAttached() ? &node_ : nullptr; }

// An output lives as long as its node and needs no reference count of its own.
void Output::retain() noexcept { node_.retain(); }
void Output::release() noexcept { node_.release(); }

void Output::disconnect() noexcept {
    while (connections_)
        Input::linkedBy(connections_)->disconnect();
}

String Output::label() const { return node_.name() + "." + name_; }

std::size_t Output::connectionCount() const noexcept {
    std::size_t count = 0;
    for (const Link<Output>* link = connections_; link; link = link->next())
        ++count;
    return count;
}

} // namespace vor::velmo_sdk::impl
