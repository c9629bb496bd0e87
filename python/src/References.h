// What Python holds of a scene: references to it and to its nodes, inputs and outputs.
//
// All keep the scene alive. A reference to an object that was removed stays valid; using it raises RemovedError.
#pragma once

#include "python/src/Python.h"
#include "python/src/Turns.h"
#include "scene/Handle.h"
#include "scene/Scene.h"

#include <memory>
#include <optional>
#include <set>

namespace vrn::python {

using vor::String;
using vor::velmo_sdk::AttrData;
using vor::velmo_sdk::AttrType;
using vor::velmo_sdk::DataType;
using vor::velmo_sdk::impl::Handle;
using vor::velmo_sdk::impl::Input;
using vor::velmo_sdk::impl::Node;
using vor::velmo_sdk::impl::Output;
using vor::velmo_sdk::impl::Scene;

struct SceneBox {
    std::optional<nb::gil_scoped_release> withoutGil{}; // while the scene is destroyed
    Scene scene{};
    Turns turns;
    nb::object diagnostics = nb::tuple(); // of the last read
    nb::object catalogue = nb::none();
    std::set<const Input*> edited{}; // buffers whose elements are being written (Editing)

    SceneBox() = default;
    SceneBox(const SceneBox&) = delete;
    SceneBox& operator=(const SceneBox&) = delete;
    // Destroying a large scene takes a quarter of the time of reading it. To release the GIL for a small one would make
    // threads wait for it once more.
    ~SceneBox() {
        constexpr vor::u64 large = 1000;
        diagnostics.reset();
        catalogue.reset();
        if (scene.nodeCount() > large)
            withoutGil.emplace();
    }

    template <class T> [[nodiscard]] const Handle<T>& awaited(const Handle<T>& handle) {
        turns.beforeReading();
        return handle;
    }
};
using Box = std::shared_ptr<SceneBox>;

[[noreturn]] void raiseRemoved(const char* what);

template <class T> inline constexpr const char* whatIs = "";
template <> inline constexpr const char* whatIs<Node> = "node";
template <> inline constexpr const char* whatIs<Input> = "input";
template <> inline constexpr const char* whatIs<Output> = "output";

template <class T> class Reference {
public:
    Reference(Box box, T* object) : box_(std::move(box)), object_(object) {}
    // The counts of references are part of the scene, which another thread may be changing.
    Reference(const Reference& other) : box_(other.box_), object_(box_->awaited(other.object_)) {}
    Reference(Reference&&) noexcept = default;
    Reference& operator=(const Reference&) = delete;
    Reference& operator=(Reference&&) = delete;

    ~Reference() {
        if (box_ && box_->turns.isChanging())
            box_->turns.dropLater(std::make_shared<Handle<T>>(std::move(object_)));
    }

    // The object, to be read or changed before the GIL is released.
    [[nodiscard]] const T& read() const {
        box_->turns.beforeReading();
        return attached();
    }
    [[nodiscard]] T& change() const {
        box_->turns.beforeChanging();
        return attached();
    }

    [[nodiscard]] const Box& box() const noexcept { return box_; }
    [[nodiscard]] bool isAttached() const noexcept { return object_->isAttached(); }

    // The address, which identifies the object as long as a reference to it exists.
    [[nodiscard]] const T* address() const noexcept { return object_.get(); }
    friend bool operator==(const Reference& a, const Reference& b) noexcept { return a.address() == b.address(); }

private:
    [[nodiscard]] T& attached() const {
        if (!object_->isAttached())
            raiseRemoved(whatIs<T>);
        return *object_;
    }

    Box box_; // destroyed after the handle, which refers to memory of the scene
    Handle<T> object_;
};

using NodeReference = Reference<Node>;
using InputReference = Reference<Input>;
using OutputReference = Reference<Output>;

} // namespace vrn::python
