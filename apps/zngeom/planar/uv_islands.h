/// The islands of a mesh's texture coordinates: the pieces in which its surface lies on the texture.
#pragma once

#include <vector>

#include "apps/zngeom/files/loaded_mesh.h"
#include "apps/zngeom/planar/rectangle_layout.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// Triangles whose corners have both vertices and texture coordinates in common are in one island.
class UVIslands
{
public:
    /// Of a mesh with texture coordinates. Fails where one that is used is not finite. May be cancelled.
    UVIslands(const LoadedMesh& loaded, znUtil::Progress& progress);

    int count() const { return static_cast<int>(m_frames.size()); }
    /// Turns each island, by half a right angle at most, so that its rectangle becomes as small as it can.
    /// \return how many were turned
    int turn();
    /// The sizes of their rectangles.
    std::vector<znLinear::Point2> sizes() const;
    /// The area of all triangles.
    double area() const;

    /// Moves and scales the islands into their places.
    void moveTo(const RectangleLayout& layout);
    /// The coordinates of a mesh that was loaded become those of the islands: per vertex where no vertex has several,
    /// per corner otherwise.
    void putInto(LoadedMesh& loaded) const;

    /// The border of an island, outlines first and then holes.
    struct Outline
    {
        std::vector<znLinear::Point2> points;
        int island;
        bool isHole;
    };
    /// The borders of all islands, those of the larger ones first. May be cancelled.
    std::vector<Outline> outlines(znUtil::Progress& progress) const;

private:
    /// How an island is turned, and its rectangle then.
    struct Frame
    {
        double cosine = 1, sine = 0;
        znLinear::Range2d box;

        znLinear::Point2 operator()(const znLinear::Point2& point) const
        {
            return {cosine * point.x + sine * point.y, cosine * point.y - sine * point.x};
        }
    };

    znLinear::Point2 uv(int vertex) const
    {
        const znGeom::MeshUV& value = m_mesh.getUVs()[vertex];
        return {static_cast<double>(value.u), static_cast<double>(value.v)};
    }

    znGeom::CompactMesh m_mesh;    ///< with a vertex for each pair of a vertex and its texture coordinates
    znGeom::Array<int> m_islandOf; ///< per vertex, -1 for those without triangles
    std::vector<Frame> m_frames;
};

} // namespace tool
