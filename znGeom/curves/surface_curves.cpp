#include "znGeom/curves/surface_curves.h"

#include <algorithm>

#include "znGeom/foundation/containers/tree.h"
#include "znGeom/topology/topo_mesh.h"
#include "znGeom/topology/topo_point.h"
#include "znGeom/topology/twin.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// The vertices that go into a mesh of their own, numbered as they are first met.
class VertexNumbers
{
public:
    explicit VertexNumbers(const CompactMesh& mesh) : m_mesh(mesh), m_numbers(mesh.getNumVertices(), -1) {}

    void addAll(const int* vertices, int count)
    {
        for (int i = 0; i < count; ++i)
            if (int& number = m_numbers[vertices[i]]; number < 0) {
                number = m_members.size();
                m_members.append(vertices[i]);
            }
    }
    int operator[](int vertex) const { return m_numbers[vertex]; }

    zn::Reference<CompactMesh> makeMesh() const
    {
        zn::Reference<CompactMesh> mesh(new CompactMesh);
        mesh->resizeVertexArray(m_members.size());
        MeshVertex* position = mesh->getVertices();
        for (const int vertex : m_members) *position++ = m_mesh.getVertices()[vertex];
        return mesh;
    }

private:
    const CompactMesh& m_mesh;
    zn::vector<int> m_numbers, m_members;
};

/// Makes the lines of a mesh from its line strips.
void deriveLines(CompactMesh& mesh, bool closed)
{
    const int* const lengths = mesh.getLineStripLengths();
    const int numStrips = mesh.getNumLineStrips();
    int count = 0;
    for (int strip = 0; strip < numStrips; ++strip) count += std::max(lengths[strip] - (closed ? 0 : 1), 0);
    mesh.resizeLineArray(count);
    MeshLine* line = mesh.getLines();
    const int* vertex = mesh.getLineStripPoints();
    for (int strip = 0; strip < numStrips; vertex += lengths[strip++])
        for (int i = 0; i < lengths[strip]; ++i)
            if (i + 1 < lengths[strip])
                *line++ = {{vertex[i], vertex[i + 1]}};
            else if (closed)
                *line++ = {{vertex[i], vertex[0]}};
}

zn::Reference<CompactMesh> meshOfStrips(const CompactMesh& mesh, const int* vertices, int numVertices,
                                        const int* lengths, int numStrips, bool closed)
{
    VertexNumbers numbers(mesh);
    numbers.addAll(vertices, numVertices);
    zn::Reference<CompactMesh> result = numbers.makeMesh();
    result->resizeLineStripArrays(numVertices, numStrips);
    std::copy_n(lengths, numStrips, result->getLineStripLengths());
    std::transform(vertices, vertices + numVertices, result->getLineStripPoints(),
                   [&](int vertex) { return numbers[vertex]; });
    deriveLines(*result, closed);
    return result;
}

/// The triangles around two places as a half-edge mesh.
class Surroundings
{
public:
    Surroundings(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshCoord& a, const MeshCoord& b)
        : m_mesh(mesh)
    {
        collect(adjTris, a.triangle);
        collect(adjTris, b.triangle);
        for (auto& [triangle, face] : m_faces) face = addTriangle(mesh.getTriangles()[triangle]);
        meshTwin(m_topoMesh);
    }

    TopoMeshPoint pointAt(const MeshCoord& place, double tolerance)
    {
        TopoMeshCoord coord;
        coord.w0 = place.weights[0], coord.w1 = place.weights[1], coord.w2 = place.weights[2];
        coord.face = m_faces[place.triangle];
        return {coord, tolerance};
    }

    /// -1 for none.
    int triangleOf(TopoMeshFace wanted) const
    {
        for (const auto& [triangle, face] : m_faces)
            if (face == wanted) return triangle;
        return -1;
    }

private:
    void collect(const MeshAdjTris& adjTris, int triangle)
    {
        for (const int corner : m_mesh.getTriangles()[triangle].corners)
            for (const int around : adjTris.around(corner)) m_faces.insertNodeUnique(around, {});
    }

    TopoMeshFace addTriangle(const MeshTriangle& triangle)
    {
        TopoMeshVertex corners[3];
        for (int i = 0; i < 3; ++i) {
            TopoMeshVertex& vertex = m_vertices[triangle[i]];
            if (!vertex) vertex = m_topoMesh.allocVertex(m_mesh.getVertices()[triangle[i]].asPoint());
            corners[i] = vertex;
        }
        return m_topoMesh.allocTriangle(corners[0], corners[1], corners[2]);
    }

    const CompactMesh& m_mesh;
    TopoMesh m_topoMesh;
    zn::map<int, TopoMeshFace> m_faces;
    zn::map<int, TopoMeshVertex> m_vertices;
};

} // namespace

MeshCurve::~MeshCurve() = default;

double MeshCurve::length(const CompactMesh& mesh) const
{
    const auto pointAt = [&](std::size_t i) { return coords[i].evaluate(mesh.getVertices(), mesh.getTriangles()); };
    double sum = 0;
    for (std::size_t i = 1; i < coords.size(); ++i) sum += distance(pointAt(i - 1), pointAt(i));
    if (closed && !coords.empty()) sum += distance(pointAt(coords.size() - 1), pointAt(0));
    return sum;
}

zn::Reference<MeshCurve> meshConvertLine(const CompactMesh& mesh, const MeshAdjTris& adjTris,
                                         const MeshSequence& sequence, int strip)
{
    std::deque<MeshCoord> coords;
    const int* vertex = sequence.getStart(strip);
    for (int i = 0; i < sequence.getLength(strip); ++i, ++vertex) {
        MeshCoord coord;
        coord.triangle = adjTris.triIndices(*vertex)[0];
        const MeshTriangle& triangle = mesh.getTriangles()[coord.triangle];
        coord.weights[triangle[0] == *vertex ? 0 : triangle[1] == *vertex ? 1 : 2] = 1.0;
        coords.push_back(coord);
    }
    return new MeshCurve(coords, true);
}

zn::Reference<CompactMesh> meshExtractLine(const CompactMesh& mesh, const MeshSequence& sequence, int strip,
                                           bool closed)
{
    const int length = sequence.getLength(strip);
    return meshOfStrips(mesh, sequence.getStart(strip), length, &length, 1, closed);
}

zn::Reference<CompactMesh> meshExtractLines(const CompactMesh& mesh, const MeshSequence& sequence, bool closed)
{
    return meshOfStrips(mesh, sequence.values.read(), sequence.values.size(), sequence.lengths.read(), sequence.size(),
                        closed);
}

zn::Reference<CompactMesh> meshExtractLine(const CompactMesh& mesh, const MeshCurve& curve)
{
    const int count = static_cast<int>(curve.coords.size());
    zn::Reference<CompactMesh> result(new CompactMesh);
    result->resizeVertexArray(count);
    result->resizeLineStripArrays(count, 1);
    result->getLineStripLengths()[0] = count;
    MeshVertex* position = result->getVertices();
    for (const MeshCoord& coord : curve.coords) {
        const Point place = coord.evaluate(mesh.getVertices(), mesh.getTriangles());
        (position++)->set(&place.x);
    }
    for (int i = 0; i < count; ++i) result->getLineStripPoints()[i] = i;
    deriveLines(*result, curve.closed);
    return result;
}

MeshCoord meshCoordInterpolate(const CompactMesh& mesh, const MeshAdjTris& adjTris, double weightA, const MeshCoord& a,
                               double weightB, const MeshCoord& b, double tolerance)
{
    const auto pointAt = [&](const MeshCoord& coord) {
        return coord.evaluate(mesh.getVertices(), mesh.getTriangles());
    };
    if (a.triangle < 0 || b.triangle < 0) return {};
    Surroundings around(mesh, adjTris, a, b);
    const TopoMeshFace common = around.pointAt(a, tolerance).adjacent(around.pointAt(b, tolerance));
    MeshCoord result;
    result.setFromPoint(around.triangleOf(common), mesh.getVerticesRaw(), mesh.getTrianglesRaw(),
                        combine(weightA, pointAt(a), weightB, pointAt(b)));
    return result;
}

} // namespace znGeom
