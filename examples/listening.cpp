// Listens to the changes of a mesh with a lambda: a view that draws again only when something that it shows has
// changed.
#include <znGeom/znGeom.h>

#include <cstdio>

using znGeom::MeshModification;

namespace {

/// Something that shows a mesh. Its connection ends with it, whichever of the two goes first.
class View : public znRTB::SignalClient
{
public:
    explicit View(const znGeom::CompactMesh& mesh)
    {
        mesh.modifiedSignal().addCallback(
            [this](znGeom::EntityModification& change) { see(static_cast<const MeshModification&>(change)); }, *this);
    }
    int numDrawings = 0;

private:
    void see(const MeshModification& change)
    {
        const bool attributeOnly = change.getType() == MeshModification::AttributesChanged;
        std::printf("%s\n", attributeOnly ? "an attribute changed" : "the surface changed");
        if (!attributeOnly) ++numDrawings;
    }
};

void makeSquare(znGeom::CompactMesh& mesh)
{
    const znGeom::MeshVertex corners[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}};
    const int triangles[] = {0, 1, 2, 3, 4, 5};
    mesh = znGeom::CompactMesh(6, corners, nullptr, nullptr, nullptr);
    mesh.copyTriangles(2, triangles);
}

} // namespace

int main()
{
    znGeom::CompactMesh mesh;
    makeSquare(mesh);

    int numChanges = 0;
    znRTB::Connection* counting = mesh.modifiedSignal().addCallback([&numChanges](auto&) { ++numChanges; });
    int numDrawings = 0;
    {
        View view(mesh);
        znUtil::Progress progress;
        znGeom::meshCompact(mesh, progress); // the library tells of what it does
        znGeom::meshComputeNormals(mesh);

        mesh.getVertices()[0].z = 1; // who edits by hand tells afterwards
        MeshModification moved(&mesh, MeshModification::GeometryChanged);
        mesh.modified(moved);
        numDrawings = view.numDrawings;
    }
    counting->disconnect();

    std::printf("%d changes, drawn %d times\n", numChanges, numDrawings);
    return numChanges == 3 && numDrawings == 2 ? 0 : 1;
}
