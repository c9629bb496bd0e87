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

template <class Enum> Enum choice(const FbxElement& camera, const char* name, int fallback) {
    constexpr double most = 100; // more than any list of choices has, and an int
    const double chosen = numberOf(camera, name, fallback);
    return static_cast<Enum>(chosen >= 0 && chosen < most ? static_cast<int>(chosen) : fallback);
}

double halfTangent(double degrees) { return std::tan(degrees * std::numbers::pi / 360); }

double aspectOf(const FbxElement& camera) {
    constexpr int heightTimesWidth = 3; // the height is a multiple of the width
    constexpr int widthTimesHeight = 4;
    const double width = numberOf(camera, "AspectWidth", 1);
    const double height = numberOf(camera, "AspectHeight", 1);
    switch (choice<int>(camera, "AspectRatioMode", 0)) {
    case heightTimesWidth:
        return 1 / height;
    case widthTimesHeight:
        return width;
    default:
        return width / height;
    }
}

// The width of the film that the picture takes, in inches.
double apertureWidth(const FbxElement& camera, double aspect) {
    const double width = numberOf(camera, "FilmWidth", 0.816);
    const double height = numberOf(camera, "FilmHeight", 0.612) * numberOf(camera, "FilmSqueezeRatio", 1);
    const bool isWide = aspect > width / height;
    switch (choice<GateFit>(camera, "GateFit", 0)) {
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
    const double aspect = aspectOf(camera);
    constexpr double millimetresPerInch = 25.4;
    const double fieldOfView = numberOf(camera, "FieldOfView", 25.115);
    switch (choice<ApertureMode>(camera, "ApertureMode", static_cast<int>(ApertureMode::Vertical))) {
    case ApertureMode::Both:
        return {aspect, halfTangent(numberOf(camera, "FieldOfViewY", 40)) * aspect};
    case ApertureMode::Horizontal:
        return {aspect, halfTangent(fieldOfView)};
    case ApertureMode::Vertical:
        return {aspect, halfTangent(fieldOfView) * aspect};
    }
    const double focalLength = numberOf(camera, "FocalLength", 34.8932762167263);
    return {aspect, apertureWidth(camera, aspect) * millimetresPerInch / focalLength / 2};
}

} // namespace vrn::convert
