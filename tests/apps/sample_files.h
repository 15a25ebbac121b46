/// The same small surface in every file format.
#pragma once

#include <string>

namespace toolTest {

/// A text with the first occurrence of some words replaced; a test failure where there is none.
std::string with(std::string text, const std::string& words, const std::string& others);

/// A unit cube with one triangle missing: 8 vertices, then one that nothing uses; 5 squares and a triangle.
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

/// A cube of squares, from -1 to 1 along y and z and between two numbers along x; inside out where the first is the
/// larger one.
std::string cubeObj(const std::string& first = "-1", const std::string& second = "1");
/// Two tetrahedra of volume 1/6 that touch at their first vertex: one of 4 triangles, and one of 6, since one of its
/// faces is divided in three.
std::string tetrahedraObj();
/// A flat square of `side` times `side` unit squares.
std::string gridObj(int side);
/// A square of `side` times `side` squares with waves of height 1; side * 4 of its vertices are on its boundary.
std::string wavesObj(int side);

} // namespace toolTest
