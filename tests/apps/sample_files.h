/// The same small surface in every file format.
#pragma once

#include <string>

namespace toolTest {

/// A unit cube of which one triangle is missing: 8 vertices, then one that nothing uses; 5 squares and a triangle.
std::string boxObj();
std::string boxOff();
std::string boxPly();
/// \param order  "little" or "big"
std::string boxBinaryPly(const std::string& order);
/// As 11 triangles.
std::string boxPlain();
std::string boxStl();
std::string boxBinaryStl();

/// A triangle and its back, with normals, in three places: as it is, moved by 10 along x, and mirrored by a scale of -1
/// along x.
std::string triangleGltf();

} // namespace toolTest
