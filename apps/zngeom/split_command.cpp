#include <algorithm>
#include <filesystem>

#include "apps/zngeom/command.h"
#include "apps/zngeom/format_option.h"
#include "apps/zngeom/mesh_files.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/part_options.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/extract.h"
#include "znGeom/editing/partition.h"

namespace tool {

namespace {

/// Triangle numbers, ascending.
using Part = std::vector<int>;

std::vector<Part> componentsOf(const znGeom::CompactMesh& mesh, Across across, znUtil::Progress& progress)
{
    const Components components = Surface(mesh, progress).components(across);
    std::vector<Part> parts(components.sizes.size());
    for (std::size_t triangle = 0; triangle < components.ofTriangle.size(); ++triangle)
        parts[static_cast<std::size_t>(components.ofTriangle[triangle])].push_back(static_cast<int>(triangle));
    return parts;
}

std::vector<Part> equalParts(const znGeom::CompactMesh& mesh, int count)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    zn::list<zn::Reference<znGeom::MeshSubset>> subsets;
    znGeom::MeshPartition(mesh, adjTris, count).compute(subsets);
    std::vector<Part> parts;
    for (const zn::Reference<znGeom::MeshSubset>& subset : subsets)
        parts.emplace_back(subset->triangles, subset->triangles + subset->numTriangles);
    std::stable_sort(parts.begin(), parts.end(), [](const Part& a, const Part& b) { return a.size() > b.size(); });
    return parts;
}

void extractPart(const znGeom::CompactMesh& mesh, const Part& part, znGeom::CompactMesh& result)
{
    std::vector<int> vertices;
    for (const int triangle : part) {
        const auto& corners = mesh.getTriangles()[triangle].corners;
        vertices.insert(vertices.end(), corners, corners + 3);
    }
    std::sort(vertices.begin(), vertices.end());
    vertices.erase(std::unique(vertices.begin(), vertices.end()), vertices.end());
    const znGeom::MeshSubset subset(static_cast<int>(vertices.size()), vertices.data(), static_cast<int>(part.size()),
                                    part.data());
    znGeom::meshExtract(result, mesh, subset);
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
std::vector<WrittenPart> writeParts(const znGeom::CompactMesh& mesh, const std::vector<Part>& parts,
                                    const std::string& pattern, znUtil::Progress& progress)
{
    std::vector<WrittenPart> written;
    std::vector<std::unique_ptr<PendingFile>> files;
    znUtil::Progress phase;
    for (const Part& part : parts) {
        progress.subPhase(1.0 / static_cast<double>(parts.size()), phase);
        znGeom::CompactMesh extracted;
        extractPart(mesh, part, extracted);
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
            ->check(CLI::PositiveNumber)
            ->excludes(by);
        sub->add_option("--most", m_mostFiles, "Write nothing if it would be more files than this")
            ->check(CLI::PositiveNumber)
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
        if (m_numParts > 0) checkCount(std::min(m_numParts, loaded.mesh.getNumTriangles()));
        const std::vector<Part> parts =
            m_numParts > 0 ? equalParts(loaded.mesh, m_numParts) : componentsOf(loaded.mesh, acrossOf(m_across), phase);
        checkCount(static_cast<int>(parts.size()));
        checkCancelled(progress);

        progress.subPhase(0.4, phase);
        return describe(loaded, writeParts(loaded.mesh, parts, m_output, phase));
    }

private:
    void checkCount(int count) const
    {
        if (count > m_mostFiles)
            throw Failure(m_input + ": would become " + std::to_string(count) + " files, more than the " +
                          std::to_string(m_mostFiles) + " that --most allows; none was written");
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
