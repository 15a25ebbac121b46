/// `tool::MeshRoute`: the way of a mesh through a command that reads one file and writes one.
#pragma once

#include <cstdint>
#include <string>

#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/files/loaded_mesh.h"
#include "apps/zngeom/frame/report.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct MeshRoute
{
    std::string input, output;
    StreamFormats formats;

    /// Adds IN and OUT.
    void addFiles(CLI::App& app, const std::string& aboutOutput = "The mesh file to write; may be the same");
    /// Adds the options that name formats.
    void addFormats(CLI::App& app) { addFormatOptions(app, formats); }

    /// Reads the mesh, after a look whether the output can be written.
    void load(LoadedMesh& loaded, znUtil::Progress& progress) const;

    /// Returns the number of bytes.
    std::int64_t save(LoadedMesh& loaded, znUtil::Progress& progress) const;
    std::int64_t save(const znGeom::CompactMesh& mesh, znUtil::Progress& progress) const;

    /// One that begins with both files, and makes room where the output goes to standard output.
    Report report() const;
};

} // namespace tool
