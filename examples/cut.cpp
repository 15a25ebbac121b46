// Draws a loop that crosses itself on a torus, cuts along it, and moves the pieces apart: cut [APART.obj]
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>

namespace {

using znLinear::Point;
using znLinear::Vector;

constexpr int around = 90, across = 40;

Point torusPoint(double a, double b)
{
    const double out = 1 + 0.4 * std::cos(b);
    return {out * std::cos(a), out * std::sin(a), 0.4 * std::sin(b)};
}

void makeTorus(znGeom::CompactMesh& mesh)
{
    mesh.resizeVertexArray(around * across);
    mesh.resizeTriangleArray(2 * around * across);
    znGeom::MeshTriangle* triangle = mesh.getTriangles();
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) {
            const Point point = torusPoint(2 * M_PI * u / around, 2 * M_PI * v / across);
            mesh.getVertices()[u * across + v].set(&point.x);
            const int nextU = (u + 1) % around * across, nextV = (v + 1) % across;
            *triangle++ = {{u * across + v, nextU + v, nextU + nextV}};
            *triangle++ = {{u * across + v, nextU + nextV, u * across + nextV}};
        }
}

/// An eight on the outer side, which needs to lie on the surface only roughly.
zn::vector<Point> drawEight()
{
    zn::vector<Point> points;
    for (int i = 0; i < 40; ++i) {
        const double t = 2 * M_PI * i / 40;
        points.append(torusPoint(0.7 * std::sin(t), 0.9 * std::sin(2 * t)) + Vector(0.05, 0, 0));
    }
    return points;
}

/// Moves each piece a little away from the middle of the torus.
void moveApart(znGeom::CompactMesh& mesh)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::Array<int> pieceOf;
    const int numPieces = znGeom::meshComponents(mesh, adjTris, &pieceOf);
    zn::vector<Vector> sums(numPieces, Vector());
    zn::vector<int> counts(numPieces, 0);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        sums[pieceOf[v]] += mesh.getVertices()[v].asPoint().asVector();
        ++counts[pieceOf[v]];
    }
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const int piece = pieceOf[v];
        const Point moved = mesh.getVertices()[v].asPoint() + sums[piece] * (0.2 / counts[piece]);
        mesh.getVertices()[v].set(&moved.x);
    }
    std::printf("%d pieces\n", numPieces);
}

} // namespace

int main(int argc, char** argv)
{
    znGeom::CompactMesh mesh;
    makeTorus(mesh);
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);

    const znGeom::MeshLayPolyline lay(mesh, adjTris);
    const znGeom::MeshLaidPolyline laid = lay(drawEight(), true);
    if (!laid.curve) return std::printf("piece %d does not arrive\n", laid.lostPiece), 1;
    std::printf("%zu places, of length %.3f\n", laid.curve->coords.size(), laid.curve->length(mesh));

    std::deque<znGeom::MeshCoord> places = laid.curve->coords;
    places.push_back(places.front()); // it is closed
    const znGeom::CompactMeshCutResult result = znGeom::meshCut(mesh, adjTris, {places}, 1e-6);
    if (!result) {
        const Point where = result.getProblemPoint();
        return std::printf("status %d at (%g, %g, %g)\n", result.getStatus(), where.x, where.y, where.z), 1;
    }
    std::printf("cut along %.3f\n", result.account.openedLength);
    moveApart(mesh);
    return argc > 1 && !znGeom::meshSave(mesh, znOS::Filename(argv[1])) ? 1 : 0;
}
