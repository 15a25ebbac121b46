#include "znGeom/shells/collar.h"

#include "znGeom/shells/internal/collar_frames.h"
#include "znGeom/shells/internal/collar_trim.h"

namespace znGeom {

using internal::BorderPath;
using internal::CollarRegion;
using internal::frameCurve;
using internal::FramedPlace;
using internal::trimCurve;

/// What a collar is built on.
class MeshCollarImpl final : public zn::ImplBase
{
public:
    MeshCollarImpl(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshBoundaries& boundaries)
        : m_mesh(mesh), m_adjTris(adjTris), m_boundaries(boundaries)
    {}

    /// The path along a border is only good while `use` runs.
    template <typename Use>
    void withPath(const MeshCoord& a, const MeshCoord& b, int boundary, bool forward, const Use& use) const
    {
        if (boundary < 0 || boundary >= m_boundaries.size()) return;
        const CollarRegion region(m_mesh, m_adjTris, {m_boundaries.getStart(boundary), m_boundaries.getEnd(boundary)});
        const auto from = region.find(a), to = region.find(b);
        if (!from || !to) return;
        BorderPath path = findBorderPath(region, *from, *to, forward);
        if (!path.places.empty()) use(path);
    }

    /// Calls `use` with the region around a curve.
    template <typename Use>
    void withRegion(const MeshCurve& curve, const Use& use) const
    {
        zn::vector<int> seeds;
        for (const MeshCoord& coord : curve.coords)
            if (coord.triangle >= 0 && coord.triangle < m_mesh.getNumTriangles())
                for (const int corner : m_mesh.getTriangles()[coord.triangle].corners) seeds.append(corner);
        use(CollarRegion(m_mesh, m_adjTris, {seeds.begin(), seeds.end()}));
    }

private:
    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    const MeshBoundaries& m_boundaries;
};

namespace {

/// Empty where one of the curve's places is none.
zn::vector<TopoMeshPoint> placesOf(const MeshCurve& curve, const CollarRegion& region)
{
    zn::vector<TopoMeshPoint> places;
    for (const MeshCoord& coord : curve.coords) {
        const auto place = region.find(coord);
        if (!place) return {};
        places.append(*place);
    }
    return places;
}

void emit(const zn::vector<FramedPlace>& framed, bool computeCurvature, zn::vector<MeshCollar::Point>& out)
{
    out.reserve(framed.size());
    for (const FramedPlace& place : framed) {
        out.append(place.point);
        if (computeCurvature) out.back().curvature = curvatureAcross(place);
    }
}

} // namespace

MeshCollar::MeshCollar(const CompactMesh& mesh, const MeshAdjTris& adjacency, const MeshBoundaries& boundaries)
    : m_impl(new MeshCollarImpl(mesh, adjacency, boundaries))
{}

double MeshCollar::getDistance(const MeshCoord& a, const MeshCoord& b, int boundary, bool forward) const
{
    double length = 0;
    m_impl->withPath(a, b, boundary, forward, [&length](const BorderPath& path) { length = path.length(); });
    return length;
}

void MeshCollar::getPoints(const MeshCoord& a, const MeshCoord& b, const Params& params, int boundary, bool forward,
                           zn::vector<Point>& out) const
{
    out.clear();
    m_impl->withPath(a, b, boundary, forward, [&](BorderPath& path) {
        divideEvenly(path, params.usePathPoints ? path.places.size() : params.count);
        emit(frameBorder(path, params.cornerAngle), params.computeCurvature, out);
    });
}

void MeshCollar::getPoints(const Params& params, const MeshCurve& curve, zn::vector<Point>& out) const
{
    out.clear();
    m_impl->withRegion(curve, [&](const CollarRegion& region) {
        emit(frameCurve(placesOf(curve, region)), params.computeCurvature, out);
    });
}

void MeshCollar::getPoints(const MeshCoord& a, const MeshCoord& b, const Params& params, const MeshCurve& curve,
                           zn::vector<Point>& out) const
{
    out.clear();
    m_impl->withRegion(curve, [&](const CollarRegion& region) {
        zn::vector<TopoMeshPoint> places = placesOf(curve, region);
        const auto from = region.find(a), to = region.find(b);
        if (!from || !to) return;
        if (curve.closed && places.size() > 1) places.append(TopoMeshPoint(places.front()));
        emit(frameCurve(trimCurve(std::move(places), *from, *to)), params.computeCurvature, out);
    });
}

} // namespace znGeom
