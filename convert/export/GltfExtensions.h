// The extensions that a glTF file uses, collected while it is written.
#pragma once

#include "scene/JsonWriter.h"

#include <set>
#include <string>

namespace vrn::convert {

class GltfExtensions {
public:
    // With `isRequired`, readers that do not know the extension must refuse the file.
    void use(const char* name, bool isRequired = false) {
        used_.insert(name);
        if (isRequired)
            required_.insert(name);
    }

    // Writes `extensionsUsed` and `extensionsRequired`.
    void writeJson(vor::velmo_sdk::impl::JsonText& json) const {
        writeList(json, "extensionsUsed", used_);
        writeList(json, "extensionsRequired", required_);
    }

private:
    static void writeList(vor::velmo_sdk::impl::JsonText& json, const char* name, const std::set<std::string>& list) {
        if (list.empty())
            return;
        json.key(name).array([&] {
            for (const std::string& extension : list)
                json.text(extension);
        });
    }

    std::set<std::string> used_;
    std::set<std::string> required_;
};

} // namespace vrn::convert
