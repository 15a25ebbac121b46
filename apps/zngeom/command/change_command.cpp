#include "apps/zngeom/command/change_command.h"

#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/picture/png_file.h"

namespace tool {

void ChangeCommand::addLastOptions(CLI::App& app)
{
    addPictureOptions(app, m_picture, "Draw the mesh before and after: a PNG file");
    m_files.addFormats(app);
}

Report ChangeCommand::run(znUtil::Progress& progress)
{
    if (isDrawn()) checkPictureName(m_picture.path);
    znUtil::Progress phase;
    LoadedMesh loaded;
    progress.subPhase(0.3, phase);
    m_files.load(loaded, phase);
    checkHasTriangles(loaded.mesh, m_files.input);

    Report report = m_files.report();
    progress.subPhase(0.6, phase);
    const std::unique_ptr<PendingFile> picture = change(loaded, phase, report);
    checkCancelled(progress);

    progress.subPhase(0.1, phase);
    m_files.save(loaded, phase);
    if (picture) putInPlace(*picture, m_picture.path);
    report.addNotes(loaded.notes);
    return report;
}

std::unique_ptr<PendingFile> ChangeCommand::draw(const Scene& before, const Scene& after, znUtil::Progress& progress,
                                                 Report& report) const
{
    checkCancelled(progress);
    progress.setCaption("drawing");
    report.add("picture", m_picture.path);
    return writePngAside(drawChange(before, after, m_picture.size), m_picture.path);
}

} // namespace tool
