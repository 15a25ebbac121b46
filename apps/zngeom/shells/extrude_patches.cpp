#include "apps/zngeom/shells/extrude_patches.h"

#include <utility>

#include "apps/zngeom/frame/failure.h"
#include "znGeom/topology/extrude.h"
#include "znGeom/topology/topo_walks.h"

namespace tool {

namespace {

using namespace znGeom;
using znLinear::AffineMatrix;
using znLinear::Point;
using znLinear::Vector;

struct Patch
{
    std::vector<TopoMeshFace> faces;
    AffineMatrix matrix;
    bool hasRim = false;
};

/// What is connected across edges, each patch in the order of its first face.
std::vector<Patch> findPatches(const TopoMesh& mesh, const std::vector<TopoMeshFace>& faces)
{
    zn::vector<bool> isLeft(mesh.faceNumbers(), false);
    for (const TopoMeshFace face : faces) isLeft[face.number()] = true;
    const zn::vector<bool> isChosen = isLeft;
    std::vector<Patch> patches;
    for (const TopoMeshFace first : faces) {
        if (!std::exchange(isLeft[first.number()], false)) continue;
        Patch patch;
        patch.faces.push_back(first);
        for (std::size_t next = 0; next < patch.faces.size(); ++next)
            for (const TopoMeshEdge e : sidesOf(patch.faces[next])) {
                const bool isInside = e->twin && isChosen[e->twin->face.number()];
                patch.hasRim = patch.hasRim || !isInside;
                if (isInside && std::exchange(isLeft[e->twin->face.number()], false))
                    patch.faces.push_back(e->twin->face);
            }
        patches.push_back(std::move(patch));
    }
    return patches;
}

/// Twice the area of a face, along its normal.
Vector areaOf(TopoMeshFace face)
{
    Vector area;
    const Point first = face->edge->origin->point;
    for (TopoMeshEdge e = face->edge->next; e->next != face->edge; e = e->next)
        area += cross(e->origin->point - first, endOf(e)->point - first);
    return area;
}

Vector normalOf(const Patch& patch)
{
    constexpr double cancelled = 1e-9;
    Vector sum;
    double total = 0;
    for (const TopoMeshFace face : patch.faces) {
        sum += areaOf(face);
        total += areaOf(face).length();
    }
    if (!(sum.length() > cancelled * total))
        throw Failure("the normals of the patch of face " + std::to_string(patch.faces.front().number()) +
                      " cancel out: --vector or --matrix is needed in place of --distance");
    return sum / sum.length();
}

/// The mean of the corners of all faces.
Point middleOf(const Patch& patch)
{
    Vector sum;
    for (const TopoMeshFace face : patch.faces) sum += face.centroid().asVector();
    return (sum / static_cast<double>(patch.faces.size())).asPoint();
}

AffineMatrix matrixFor(const Patch& patch, const ExtrudeMotion& motion)
{
    AffineMatrix scaling(motion.scale), moving = motion.matrix.value_or(AffineMatrix());
    if (motion.scale != 1) scaling.setRow(3, middleOf(patch).asVector() * (1 - motion.scale));
    if (motion.vector) moving.setRow(3, *motion.vector);
    if (motion.distance) moving.setRow(3, normalOf(patch) * *motion.distance);
    return scaling * moving;
}

} // namespace

ExtrudeOutcome extrudePatches(TopoMesh& mesh, const std::vector<TopoMeshFace>& faces, const ExtrudeMotion& motion)
{
    std::vector<Patch> patches = findPatches(mesh, faces);
    for (Patch& patch : patches) patch.matrix = matrixFor(patch, motion);
    ExtrudeOutcome outcome;
    ExtrudeTopoFace extrude(mesh);
    for (const Patch& patch : patches) {
        zn::unordered_set<TopoMeshFace> in, out;
        for (const TopoMeshFace face : patch.faces) in.insert(face);
        extrude(in, out, patch.matrix);
        ++outcome.numPatches;
        outcome.numSheets += patch.hasRim && !in.empty() ? 1 : 0;
        outcome.numClosed += patch.hasRim ? 0 : 1;
        for (auto node = out.firstNode(); node; node = out.nextItem(node)) outcome.newFaces.push_back(node.value());
    }
    return outcome;
}

} // namespace tool
