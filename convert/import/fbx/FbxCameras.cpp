#include "convert/import/fbx/FbxCameras.h"

#include "convert/import/fbx/FbxScene.h"

#include <cmath>
#include <numbers>

namespace vrn::convert {

namespace {

// How the picture is fitted into the film; otherwise the film is taken as it is.
enum class GateFit { Vertical = 1, Horizontal = 2, Fill = 3, Overscan = 4 };

// What states the field of view; otherwise the focal length does.
enum class ApertureMode { Both = 0, Horizontal = 1, Vertical = 2 };

class CameraProperties {
public:
    explicit CameraProperties(const FbxElement& camera) : camera_(camera) {}

    [[nodiscard]] double number(const char* name, double fallback) const {
        constexpr std::size_t firstValue = 4;
        const FbxElement* property = propertyOf(camera_, name);
        return property ? property->value(firstValue).number() : fallback;
    }

    template <class Enum> [[nodiscard]] Enum choice(const char* name, int fallback) const {
        constexpr double most = 100; // more than any list of choices has, and an int
        const double chosen = number(name, fallback);
        return static_cast<Enum>(chosen >= 0 && chosen < most ? static_cast<int>(chosen) : fallback);
    }

private:
    const FbxElement& camera_;
};

double halfTangent(double degrees) { return std::tan(degrees * std::numbers::pi / 360); }

double aspectOf(const CameraProperties& camera) {
    constexpr int heightTimesWidth = 3; // the height is a multiple of the width
    constexpr int widthTimesHeight = 4;
    const double width = camera.number("AspectWidth", 1);
    const double height = camera.number("AspectHeight", 1);
    switch (camera.choice<int>("AspectRatioMode", 0)) {
    case heightTimesWidth:
        return 1 / height;
    case widthTimesHeight:
        return width;
    default:
        return width / height;
    }
}

// The width of the film that the picture takes, in inches.
double apertureWidth(const CameraProperties& camera, double aspect) {
    const double width = camera.number("FilmWidth", 0.816);
    const double height = camera.number("FilmHeight", 0.612) * camera.number("FilmSqueezeRatio", 1);
    const bool isWide = aspect > width / height;
    switch (camera.choice<GateFit>("GateFit", 0)) {
    case GateFit::Vertical:
        return height * aspect;
    case GateFit::Fill:
        return isWide ? width : height * aspect;
    case GateFit::Overscan:
        return isWide ? height * aspect : width;
    case GateFit::Horizontal:
    default:
        return width;
    }
}

} // namespace

FbxView viewOf(const FbxElement& camera) {
    const CameraProperties properties(camera);
    const double aspect = aspectOf(properties);
    constexpr double millimetresPerInch = 25.4;
    const double fieldOfView = properties.number("FieldOfView", 25.115);
    switch (properties.choice<ApertureMode>("ApertureMode", static_cast<int>(ApertureMode::Vertical))) {
    case ApertureMode::Both:
        return {aspect, halfTangent(properties.number("FieldOfViewY", 40)) * aspect};
    case ApertureMode::Horizontal:
        return {aspect, halfTangent(fieldOfView)};
    case ApertureMode::Vertical:
        return {aspect, halfTangent(fieldOfView) * aspect};
    }
    const double focalLength = properties.number("FocalLength", 34.8932762167263);
    return {aspect, apertureWidth(properties, aspect) * millimetresPerInch / focalLength / 2};
}

} // namespace vrn::convert
