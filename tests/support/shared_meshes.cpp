#include "tests/support/shared_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "znGeom/editing/weld.h"
#include "znGeom/files/mesh_load.h"

using namespace znGeom;

bool znTest::forEachSharedMesh(int mostTriangles, const std::function<void(const CompactMesh&)>& visit)
{
    const auto folder = std::filesystem::path(ZNGEOM_SOURCE_DIR) / "../shared/meshes";
    if (!std::filesystem::is_directory(folder)) return false;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__clang__)
    mostTriangles = std::min(mostTriangles, 3000);
#endif
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        CompactMesh mesh;
        if (!meshLoad(mesh, znOS::Filename(file.c_str())) || mesh.getNumTriangles() > mostTriangles) continue;
        mesh.deleteNormals();
        meshCompact(mesh);
        SCOPED_TRACE(file.filename().string());
        visit(mesh);
    }
    return true;
}
