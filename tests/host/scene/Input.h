// The inputs of a scene model that records the calls of the reader.
#pragma once

#include "scene/AttrData.h"
#include "scene/Interfaces.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vor::velmo_sdk::impl {

// Every call that changes or queries the scene, in order.
inline std::vector<std::string> calls;

inline std::function<void(const std::string&)> onCall; // called with each of them

template <class... Words> void record(const Words&... words) {
    std::string line;
    ((line += std::string_view(words)), ...);
    calls.push_back(line);
    if (onCall)
        onCall(line);
}

class Input final : public interfaces::IInput {
public:
    Input(std::string path, Input* parent, AttrData value)
        : path_(std::move(path)), parent_(parent), value_(std::move(value)) {}

    // Operations of the interface.
    [[nodiscard]] String label() const override { return std::string_view(path_); }
    void connect(interfaces::IOutput* output) override { record(path_, ".connect(", output->name(), ")"); }
    void disconnect() override { record(path_, ".disconnect()"); }
    void setNode(interfaces::INode* node) override {
        record(path_, ".setNode(", node ? node->name() : String("null"), ")");
    }
    void retain() override { record(path_, ".retain()"); }
    void release() override { record(path_, ".release()"); }
    [[nodiscard]] bool isAttached() const override { return true; }

    void assign(AttrData value) {
        record(path_, ".assign(", describe(value), ")");
        value_ = std::move(value);
    }
    void set(AttrData value) {
        record(path_, ".set(", describe(value), ")");
        value_ = std::move(value);
    }
    Input* createInput(const String& name, AttrType type) {
        record(path_, ".createInput(", name, ", ", attrTypeName(type), ")");
        return add(name, AttrData::zero(type));
    }
    Input* createArray(const String& name, AttrType elementType) {
        record(path_, ".createArray(", name, ", ", attrTypeName(elementType), ")");
        return add(name, AttrData::array(elementType));
    }

    // Queries.
    [[nodiscard]] AttrType type() const { return value_.type(); }
    [[nodiscard]] String typeName() const override { return attrTypeName(type()); }
    [[nodiscard]] DataType dataType() const { return value_.dataType(); }
    [[nodiscard]] AttrType elementType() const { return value_.elementType(); }
    [[nodiscard]] Input* parent() const { return parent_; }
    [[nodiscard]] Input* input(const String& name) const {
        const auto found = members_.find(std::string(name.view()));
        return found == members_.end() ? nullptr : found->second.get();
    }
    [[nodiscard]] u64 size() const { return elements_.size(); }
    [[nodiscard]] Input* element(u64 i) const { return elements_[i].get(); }
    [[nodiscard]] u64 untypedElements() const { return elements_.size(); } // at most this many
    Input* appendElement() {
        record(path_, ".appendElement()");
        const std::string path = path_ + "[" + std::to_string(elements_.size()) + "]";
        return elements_.emplace_back(std::make_unique<Input>(path, this, AttrData::zero(elementType()))).get();
    }
    [[nodiscard]] bool isLocked() const { return path_ == "a.locked"; }
    [[nodiscard]] bool isLinkOnly() const { return path_ == "a.linkOnly"; }
    [[nodiscard]] const StringVector& enumeration() const {
        static const StringVector some{"a", "b"};
        static const StringVector none;
        return path_ == "a.mode" ? some : none;
    }

private:
    static std::string describe(const AttrData& value) {
        std::string text = attrTypeName(value.type());
        for (const double component : value.components())
            text += " " + std::to_string(component).substr(0, 4);
        if (value.type() == AttrType::Int)
            text += " " + std::to_string(value.asInt());
        if (value.type() == AttrType::String)
            text += std::string(" ") + value.asString();
        if (value.type() == AttrType::Array)
            text += std::string(" of ") + attrTypeName(value.elementType());
        if (value.type() == AttrType::Buffer)
            text += std::string(" of ") + std::to_string(value.count()) + " " + dataTypeName(value.dataType());
        return text;
    }
    Input* add(const String& name, AttrData value) {
        auto& member = members_[std::string(name.view())];
        member = std::make_unique<Input>(path_ + "." + std::string(name.view()), this, std::move(value));
        return member.get();
    }

    std::string path_;
    Input* parent_;
    AttrData value_;
    std::map<std::string, std::unique_ptr<Input>> members_;
    std::vector<std::unique_ptr<Input>> elements_;
};

} // namespace vor::velmo_sdk::impl
