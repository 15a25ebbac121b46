#include "apps/zngeom/command/listing.h"

#include <CLI/App.hpp>

#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/write_file.h"

namespace tool {

void Listing::addTo(CLI::App& app, const char* name, const char* about)
{
    m_app = &app;
    app.add_option("MESH", mesh, "The mesh file")->required();
    app.add_option(name, questions, about)->required();
    app.add_option("-o,--output", m_output, "The file to write, instead of standard output");
    addFormatOption(app, formats);
}

void Listing::load(LoadedMesh& loaded, znUtil::Progress& progress) const
{
    for (const std::string& input : {mesh, questions})
        if (isToFile()) checkIsOther(input, m_output);
    loadMesh(mesh, progress, loaded, formats.input);
    checkHasTriangles(loaded.mesh, mesh);
    checkFinite(loaded.mesh.getVertices(), loaded.mesh.getNumVertices(), mesh);
}

std::vector<znGeom::MeshVertex> Listing::loadPoints(znUtil::Progress& progress) const
{
    return tool::loadPoints(questions, progress, questions == standardStream ? formats.input : "");
}

/// The flag is common to all commands; here it applies to the lines as well.
bool Listing::isJson() const { return m_app->get_option("--json")->count() > 0; }

Report Listing::finish(std::string text) const
{
    Report report;
    if (!isToFile()) {
        report.setOutput(std::move(text));
        return report;
    }
    writeFile(text, m_output);
    report.add("mesh", mesh);
    report.add("output", m_output);
    report.makeRoomFor(m_output);
    return report;
}

} // namespace tool
