/// Half-edge meshes of polygons, and what holds for meshes as a whole.
#pragma once

#include <array>
#include <map>
#include <vector>

#include "znGeom/topology.h"

namespace znTest {

/// The changes that a half-edge mesh announced, by their types.
struct TopoListener : znRTB::SignalClient
{
    std::vector<int> types;

    explicit TopoListener(const znGeom::TopoMesh& mesh)
    {
        mesh.modifiedSignal().addCallback(
            new znRTB::FunctionArgMember<znGeom::EntityModification&, TopoListener>(this, &TopoListener::take), *this);
    }
    void take(znGeom::EntityModification& modification)
    {
        types.push_back(static_cast<znGeom::TopoMeshModification&>(modification).getType());
    }
};

/// Vertices on a lattice, each made when it is first asked for.
class Lattice
{
public:
    explicit Lattice(znGeom::TopoMesh& mesh) : m_mesh(mesh) {}

    znGeom::TopoMeshVertex operator()(int x, int y, int z)
    {
        znGeom::TopoMeshVertex& vertex = m_vertices[{x, y, z}];
        if (!vertex) vertex = m_mesh.allocVertex({double(x), double(y), double(z)});
        return vertex;
    }

private:
    znGeom::TopoMesh& m_mesh;
    std::map<std::array<int, 3>, znGeom::TopoMeshVertex> m_vertices;
};

/// columns x rows squares in z = 0, row by row, which face +z.
inline std::vector<znGeom::TopoMeshFace> addSquares(znGeom::TopoMesh& mesh, int columns, int rows)
{
    std::vector<znGeom::TopoMeshFace> faces;
    Lattice at(mesh);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            faces.push_back(mesh.allocFace({at(x, y, 0), at(x + 1, y, 0), at(x + 1, y + 1, 0), at(x, y + 1, 0)}));
    meshTwin(mesh);
    return faces;
}

/// A cube of n x n squares on each side. \return those on top, row by row, which face +z
inline std::vector<znGeom::TopoMeshFace> addBox(znGeom::TopoMesh& mesh, int n)
{
    std::vector<znGeom::TopoMeshFace> top;
    Lattice at(mesh);
    for (int axis = 0; axis < 3; ++axis)
        for (const int level : {0, n})
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) {
                    const auto corner = [&](int across, int along) {
                        std::array<int, 3> place{};
                        place[size_t(axis)] = level;
                        place[size_t(axis + 1) % 3] = j + (level == 0 ? along : across);
                        place[size_t(axis + 2) % 3] = i + (level == 0 ? across : along);
                        return at(place[0], place[1], place[2]);
                    };
                    const auto face = mesh.allocFace({corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1)});
                    if (axis == 2 && level == n) top.push_back(face);
                }
    meshTwin(mesh);
    return top;
}

/// A cone over each face's fan, from the origin.
inline double volumeOf(const znGeom::TopoMesh& mesh)
{
    double sixfold = 0;
    for (const auto face : facesOf(mesh))
        for (auto e = face->edge->next; e->next != face->edge; e = e->next)
            sixfold += dot(face->edge->origin->point.asVector(),
                           cross(e->origin->point.asVector(), endOf(e)->point.asVector()));
    return sixfold / 6;
}

/// Vertices that have a face, less edges, plus faces.
inline int eulerNumber(const znGeom::TopoMesh& mesh)
{
    int number = mesh.numFaces();
    for (const auto v : verticesOf(mesh)) number += v->edge ? 1 : 0;
    for (const auto e : edgesOf(mesh)) number -= !e->twin || e < e->twin ? 1 : 0;
    return number;
}

} // namespace znTest
