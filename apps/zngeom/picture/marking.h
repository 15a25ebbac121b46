/// `tool::Marking`: what a picture of a mesh points out.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "apps/zngeom/picture/colour.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// Things of one kind on a mesh, in one colour. Most kinds have one of the three lists.
struct Marking
{
    std::string name; ///< in the legend; small letters
    std::size_t count = 0;
    Colour colour;
    std::vector<int> triangles;
    std::vector<std::array<znLinear::Point, 2>> lines;
    std::vector<znLinear::Point> points;
    /// Thin, hidden by what is in front of it, and of no weight for the choice of a view: something to go by.
    bool isAside = false;
};

/// A mesh with its markings, in the order in which they cover one another.
struct Scene
{
    const znGeom::CompactMesh* mesh = nullptr;
    std::vector<Marking> markings;
    std::string remark; ///< for the legend; small letters
    /// Whether the outlines are those of the polygons, whose fans the triangles are.
    bool showsPolygons = false;
};

/// One thing that is marked: its ends, or its corners, with the last one repeated.
using MarkedThing = std::array<znLinear::Point, 3>;

/// The things of a marking that lie at finite places, evenly picked if there are more than a number.
std::vector<MarkedThing> markedThings(const znGeom::CompactMesh& mesh, const Marking& marking, std::size_t most);

znLinear::Point middleOf(const MarkedThing& thing);

} // namespace tool
