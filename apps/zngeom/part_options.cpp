#include "apps/zngeom/part_options.h"

#include <CLI/App.hpp>

#include "apps/zngeom/failure.h"

namespace tool {

CLI::Option* addAcrossOption(CLI::App& app, std::string& word)
{
    word = "edges";
    return app.add_option("--by", word, "What connects triangles: shared edges, or also single shared vertices")
        ->check(CLI::IsMember({"edges", "vertices"}))
        ->option_text("edges|vertices [edges]");
}

Across acrossOf(const std::string& word) { return word == "vertices" ? Across::Vertices : Across::Edges; }

void checkHasTriangles(const znGeom::CompactMesh& mesh, const std::string& path)
{
    if (mesh.getNumTriangles() == 0) throw Failure(path + ": has no triangles");
}

} // namespace tool
