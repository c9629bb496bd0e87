// A scene model that records the calls of the reader.
#pragma once

#include "scene/Node.h"

namespace vor::velmo_sdk::impl {

inline constexpr u64 VRX_FILE_VERSION_1 = 1;

struct SceneLimits {
    u64 maxArrayElements = 100;
    u64 maxBufferBytes = 1000;
};

class Scene final : public interfaces::IScene {
public:
    void clearComments() { record("clearComments()"); }
    void setFileVersion(u64 version) { record("setFileVersion(", String(version), ")"); }
    void setFileTime(const String& time) { record("setFileTime(", time, ")"); }
    void pushFileComment(const String& comment) { record("pushFileComment(", comment, ")"); }
    [[nodiscard]] Node* findNode(const String& name) const {
        record("findNode(", name, ")");
        const auto found = nodes_.find(std::string(name.view()));
        return found == nodes_.end() ? nullptr : found->second.get();
    }
    Node* createNode(const String& type, const String& name, const String& note) {
        record("createNode(", type, ", ", name, ", ", note, ")");
        return add(type, name);
    }
    Node* defineNode(const String& name) {
        record("defineNode(", name, ")");
        return add(name, name);
    }
    void removeNode(const String& name) {
        record("removeNode(", name, ")");
        nodes_.erase(std::string(name.view()));
    }
    [[nodiscard]] SceneLimits limits() const { return {}; }

private:
    Node* add(const String& type, const String& name) {
        auto& node = nodes_[std::string(name.view())];
        node = std::make_unique<Node>(type, name);
        return node.get();
    }
    std::map<std::string, std::unique_ptr<Node>> nodes_;
};

class NameMapScope {
public:
    explicit NameMapScope(const Scene*) { record("begin name maps"); }
    ~NameMapScope() { record("end name maps"); }
    NameMapScope(const NameMapScope&) = delete;
    NameMapScope& operator=(const NameMapScope&) = delete;
};

inline String updateInputName(const String& nodeType, const String& inputName) {
    record("updateInputName(", nodeType, ", ", inputName, ")");
    return inputName == "old" ? String("current") : inputName;
}

inline String updateOutputName(const String& nodeType, const String& outputName) {
    record("updateOutputName(", nodeType, ", ", outputName, ")");
    return outputName;
}

} // namespace vor::velmo_sdk::impl
