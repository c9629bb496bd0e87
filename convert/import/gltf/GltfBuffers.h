// The bytes of a glTF file's buffers, buffer views and data URIs.
#pragma once

#include "convert/import/gltf/GltfJson.h"

#include <map>
#include <optional>
#include <span>

namespace vrn::convert {

class GltfBuffers {
public:
    // `binary` is the binary chunk of a GLB, which must outlive this object.
    GltfBuffers(const GltfJson& json, std::string_view binary);

    // The bytes of a buffer view, decompressed if it is compressed with EXT_meshopt_compression. Valid as long as this
    // object. Refuses views that exceed their buffer and data that cannot be read.
    [[nodiscard]] std::string_view view(const GltfValue& index);

    // The distance of the elements of that view; nothing if they are adjacent.
    [[nodiscard]] std::optional<u64> strideOf(const GltfValue& index) const;

private:
    [[nodiscard]] std::string_view buffer(const GltfValue& index);
    [[nodiscard]] std::string load(const GltfValue& buffer) const;
    [[nodiscard]] std::string_view range(const GltfValue& view);
    [[nodiscard]] std::string decompress(const GltfValue& compression);

    const GltfJson& json_;
    std::string_view binary_;
    std::map<u64, std::string> buffers_;      // those that are not in the GLB, as far as they were needed
    std::map<u64, std::string> decompressed_; // by buffer view
};

// The bytes of a `data:` URI in base64; nothing if the text is not one. Refuses malformed base64 (RFC 4648).
[[nodiscard]] std::optional<std::string> bytesOfDataUri(const GltfValue& uri);

// The path of the file that a URI refers to, relative to the folder of the glTF file.
[[nodiscard]] std::string fileOf(const GltfValue& uri);

} // namespace vrn::convert
