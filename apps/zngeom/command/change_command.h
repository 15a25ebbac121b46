/// `tool::ChangeCommand`: what commands have in common that change a mesh and draw it before and after.
#pragma once

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/mesh_route.h"
#include "apps/zngeom/command/picture_option.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/picture/marking.h"

namespace tool {

class ChangeCommand : public Command
{
public:
    Report run(znUtil::Progress& progress) final;

protected:
    /// Adds the options that come last: those of the picture, and the formats.
    void addLastOptions(CLI::App& app);
    bool isDrawn() const { return !m_picture.path.empty(); }

    /// Changes a mesh, which has triangles. Returns the picture, which waits for its place; null where none is wanted.
    virtual std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress,
                                                Report& report) const = 0;
    std::unique_ptr<PendingFile> draw(const Scene& before, const Scene& after, znUtil::Progress& progress,
                                      Report& report) const;

    MeshRoute m_files;

private:
    PictureOptions m_picture;
};

} // namespace tool
