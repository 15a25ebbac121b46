#include "apps/zngeom/command/mesh_route.h"

#include <CLI/App.hpp>

#include "apps/zngeom/files/mesh_files.h"

namespace tool {

void MeshRoute::addFiles(CLI::App& app, const std::string& aboutOutput)
{
    app.add_option("IN", input, "The mesh file to read")->required();
    app.add_option("OUT", output, aboutOutput)->required();
}

void MeshRoute::load(LoadedMesh& loaded, znUtil::Progress& progress) const
{
    checkOutputFormat(output, formats.ofOutput());
    loadMesh(input, progress, loaded, formats.input);
}

std::int64_t MeshRoute::save(LoadedMesh& loaded, znUtil::Progress& progress) const
{
    return saveMesh(loaded, output, progress, formats.ofOutput());
}

std::int64_t MeshRoute::save(const znGeom::CompactMesh& mesh, znUtil::Progress& progress) const
{
    return saveMesh(mesh, output, progress, formats.ofOutput());
}

Report MeshRoute::report() const
{
    Report report;
    report.add("input", input);
    report.add("output", output);
    report.makeRoomFor(output);
    return report;
}

} // namespace tool
