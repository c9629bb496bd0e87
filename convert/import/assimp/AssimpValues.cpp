#include "convert/import/assimp/AssimpValues.h"

#include "scene/core/NumberText.h"

namespace vrn::convert {

double shortestDecimal(float number) {
    char digits[vor::realTextCapacity];
    double decimal = static_cast<double>(number);
    (void)vor::parseReal(vor::writeReal(number, digits), decimal);
    return decimal;
}

vor::String labelOf(const aiString& name, const char* kind, unsigned index) {
    return name.length == 0 ? vor::String::format("%s %u", kind, index) : vor::String(viewOf(name));
}

Vector vectorOf(const aiVector3D& vector) {
    return {shortestDecimal(vector.x), shortestDecimal(vector.y), shortestDecimal(vector.z)};
}

Matrix matrixOf(const aiMatrix4x4& matrix) {
    Matrix transposed{};
    for (unsigned row = 0; row < 4; ++row)
        for (unsigned column = 0; column < 4; ++column)
            transposed[4 * column + row] = shortestDecimal(matrix[row][column]);
    return transposed;
}

} // namespace vrn::convert
