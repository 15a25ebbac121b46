#include <algorithm>
#include <filesystem>
#include <numeric>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/extract_parts.h"
#include "znGeom/editing/partition.h"

namespace tool {

namespace {

/// A divided mesh.
struct Division
{
    std::vector<int> partOf; ///< the part of each triangle
    int numParts = 0;
};

Division equalParts(const znGeom::CompactMesh& mesh, int count, const znUtil::Progress& progress)
{
    const EndOnSignal endOnSignal(progress);
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    zn::list<zn::Reference<znGeom::MeshSubset>> subsets;
    znGeom::MeshPartition(mesh, adjTris, count).compute(subsets);
    znGeom::Remap partOf;
    znGeom::meshTriSubsetMembership(mesh, subsets, partOf);
    return {{partOf.data(), partOf.data() + partOf.getDomainSize()}, partOf.range};
}

/// The numbers of the parts, the one with the most triangles first.
std::vector<int> orderBySize(const znGeom::MeshExtractParts& parts)
{
    std::vector<int> order(static_cast<std::size_t>(parts.getNumParts()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&parts](int a, int b) { return parts.triangles(a).size() > parts.triangles(b).size(); });
    return order;
}

/// parts/out.obj becomes parts/out-1.obj.
std::string numbered(const std::string& pattern, std::size_t number)
{
    std::filesystem::path path(pattern);
    const std::string extension = path.extension().string();
    path.replace_extension();
    return path.string() + "-" + std::to_string(number) + extension;
}

struct WrittenPart
{
    std::string path;
    int numVertices, numTriangles;
};

/// All files are complete before the first takes its place.
std::vector<WrittenPart> writeParts(const znGeom::CompactMesh& mesh, const Division& division,
                                    const std::string& pattern, znUtil::Progress& progress)
{
    std::vector<WrittenPart> written;
    std::vector<std::unique_ptr<PendingFile>> files;
    znUtil::Progress phase;
    znGeom::MeshExtractParts parts(mesh, division.partOf.data(), division.numParts);
    for (const int part : orderBySize(parts)) {
        progress.subPhase(1.0 / division.numParts, phase);
        znGeom::CompactMesh extracted;
        parts.extract(part, extracted);
        written.push_back(
            {numbered(pattern, written.size() + 1), extracted.getNumVertices(), extracted.getNumTriangles()});
        files.push_back(writeAside(extracted, written.back().path, phase));
    }
    for (std::size_t i = 0; i < files.size(); ++i) putInPlace(*files[i], written[i].path);
    return written;
}

void addFiles(const std::vector<WrittenPart>& written, Report& report)
{
    constexpr std::size_t mostShown = 10;
    Report::Value files = Report::Value::array();
    for (const WrittenPart& part : written) {
        if (files.size() < mostShown)
            report.addForPeople("  part " + std::to_string(files.size() + 1),
                                part.path + ", " + std::to_string(part.numTriangles) + " triangles, " +
                                    std::to_string(part.numVertices) + " vertices");
        files.push_back({{"file", part.path}, {"vertices", part.numVertices}, {"triangles", part.numTriangles}});
    }
    if (written.size() > mostShown)
        report.addForPeople("  and more", std::to_string(written.size() - mostShown) + ", to " + written.back().path);
    report.addForPrograms("files", std::move(files));
}

class SplitCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("split", "Write each component of a mesh, or equal parts of it, to a file");
        sub->footer(
            "OUT names all files: out.obj becomes out-1.obj, out-2.obj, ..., the part of most triangles first. Files\n"
            "of these names are replaced, when all new ones are complete. Vertices keep their order, normals and\n"
            "texture coordinates; those that no triangle uses are in no part. Polygons become triangles.");
        sub->add_option("IN", m_input, "The mesh file to read")->required();
        sub->add_option("OUT", m_output, "The files to write; its extension chooses the format")->required();
        CLI::Option* by = addAcrossOption(*sub, m_across);
        sub->add_option("--parts", m_numParts, "Instead of components, this many connected parts of equal size")
            ->check(wholeNumberFrom(1))
            ->excludes(by);
        sub->add_option("--most", m_mostFiles, "Write nothing if it would be more files than this")
            ->check(wholeNumberFrom(1))
            ->capture_default_str();
        addFormatOption(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkOutputFormat(m_output);
        znUtil::Progress phase;
        LoadedMesh loaded;
        progress.subPhase(0.4, phase);
        loadMesh(m_input, phase, loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_input);

        progress.subPhase(0.2, phase);
        phase.setCaption("dividing");
        const Division division = divide(loaded, phase);
        checkCancelled(progress);

        progress.subPhase(0.4, phase);
        return describe(loaded, writeParts(loaded.mesh, division, m_output, phase));
    }

private:
    Division divide(LoadedMesh& loaded, znUtil::Progress& progress) const
    {
        const znGeom::CompactMesh& mesh = loaded.mesh;
        if (m_numParts > 0) checkCount(std::min(m_numParts, mesh.getNumTriangles()), "");
        znUtil::Progress phase;
        progress.subPhase(0.4, phase);
        znGeom::MeshEdgeSides sides;
        znGeom::meshEdgeSides(mesh, phase, sides);
        checkCancelled(progress);
        progress.subPhase(0.3, phase);
        const std::string hint = soupNote(mesh, sides, phase);
        if (!hint.empty()) loaded.notes.push_back(hint);

        progress.subPhase(0.3, phase);
        if (m_numParts > 0) return equalParts(mesh, m_numParts, phase);
        const znGeom::MeshTriangleComponents components = findComponents(mesh, sides, m_across, phase);
        checkCount(components.count(), hint);
        return {{components.ofTriangle.begin(), components.ofTriangle.end()}, components.count()};
    }

    void checkCount(int count, const std::string& hint) const
    {
        if (count > m_mostFiles)
            throw Failure(m_input + ": would become " + std::to_string(count) + " files, more than the " +
                          std::to_string(m_mostFiles) + " that --most allows; none was written" +
                          (hint.empty() ? "" : "; " + hint));
    }

    Report describe(LoadedMesh& loaded, const std::vector<WrittenPart>& written) const
    {
        Report report;
        report.add("input", m_input);
        report.add("parts", written.size());
        addFiles(written, report);
        noteUnwritten(loaded, m_output);
        report.addNotes(loaded.notes);
        return report;
    }

    std::string m_input, m_output, m_across;
    StreamFormats m_formats;
    int m_numParts = 0, m_mostFiles = 1000;
};

} // namespace

std::unique_ptr<Command> makeSplitCommand() { return std::make_unique<SplitCommand>(); }

} // namespace tool
