#include <deque>
#include <filesystem>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/files/line_files.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/spatial/queries/mesh_intersect.h"

namespace tool {

namespace {

using Crossings = std::deque<znGeom::MeshIntersectPair>;

std::size_t countTriangles(const Crossings& crossings)
{
    std::vector<int> triangles;
    for (const znGeom::MeshIntersectPair& crossing : crossings) triangles.push_back(crossing.start.triangle);
    std::sort(triangles.begin(), triangles.end());
    return static_cast<std::size_t>(std::unique(triangles.begin(), triangles.end()) - triangles.begin());
}

/// The same segments on both meshes.
struct CrossingsOfTwo
{
    Crossings onA, onB;
};

class IntersectCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("intersect", "Write the lines along which two meshes cross");
        sub->footer(
            "Each pair of crossing triangles gives a segment, two vertices and a line in OUT, an OBJ or PLY file.\n"
            "What merely touches at a point, and triangles that lie in one plane, give none. --json also tells the\n"
            "numbers of the two triangles of each segment, in the order of the lines: counted from 0 in the order\n"
            "of the mesh files, a polygon by the triangles of its fan. Where a mesh crosses itself: zngeom check.");
        sub->add_option("A", m_inputA, "The first mesh file")->required();
        sub->add_option("B", m_inputB, "The second mesh file")->required();
        sub->add_option("OUT", m_output, "The file to write, .obj or .ply")->required();
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkLineFormat(m_output, m_formats.ofOutput());
        checkAreTwo();
        znUtil::Progress phase;
        LoadedMesh a, b;
        progress.subPhase(0.3, phase);
        loadMesh(m_inputA, phase, a, m_formats.input);
        checkHasTriangles(a.mesh, m_inputA);
        progress.subPhase(0.3, phase);
        loadMesh(m_inputB, phase, b, m_formats.input);
        checkHasTriangles(b.mesh, m_inputB);

        progress.subPhase(0.35, phase);
        phase.setCaption("intersecting");
        CrossingsOfTwo crossings;
        znGeom::MeshIntersect(a.mesh).intersect(b.mesh, znLinear::AffineMatrix::Identity, phase, crossings.onA,
                                                crossings.onB);
        checkCancelled(progress);
        const std::vector<Segment> segments = segmentsOf(a.mesh, b.mesh, crossings);
        saveLines(segments, m_output, m_formats.ofOutput());
        return describe(segments, crossings);
    }

private:
    void checkAreTwo() const
    {
        std::error_code error;
        if (m_inputA == standardStream && m_inputB == standardStream)
            throw Failure("-: only one of the two meshes can be standard input");
        if (std::filesystem::equivalent(m_inputA, m_inputB, error))
            throw Failure(m_inputB + ": is the first mesh as well; zngeom check tells where a mesh crosses itself");
        for (const std::string& input : {m_inputA, m_inputB}) checkIsOther(input, m_output);
    }

    /// On the first mesh; on the second where the triangle of the first has no area.
    static std::vector<Segment> segmentsOf(const znGeom::CompactMesh& a, const znGeom::CompactMesh& b,
                                           const CrossingsOfTwo& crossings)
    {
        std::vector<Segment> segments;
        for (std::size_t i = 0; i < crossings.onA.size(); ++i) {
            const bool isOnA = crossings.onA[i].start.valid() && crossings.onA[i].end.valid();
            const znGeom::CompactMesh& mesh = isOnA ? a : b;
            const znGeom::MeshIntersectPair& crossing = isOnA ? crossings.onA[i] : crossings.onB[i];
            segments.push_back({crossing.start.evaluate(mesh.getVertices(), mesh.getTriangles()),
                                crossing.end.evaluate(mesh.getVertices(), mesh.getTriangles())});
        }
        return segments;
    }

    Report describe(const std::vector<Segment>& segments, const CrossingsOfTwo& crossings) const
    {
        double length = 0;
        Report::Value triangles = Report::Value::array();
        for (std::size_t i = 0; i < segments.size(); ++i) {
            length += (segments[i][1] - segments[i][0]).length();
            triangles.push_back({crossings.onA[i].start.triangle, crossings.onB[i].start.triangle});
        }
        Report report;
        report.add("a", m_inputA);
        report.add("b", m_inputB);
        report.add("output", m_output);
        report.add("crossings", segments.size());
        report.add("triangles_of_a", countTriangles(crossings.onA));
        report.add("triangles_of_b", countTriangles(crossings.onB));
        report.add("length", rounded(length));
        report.addForPrograms("crossing_triangles", std::move(triangles));
        report.makeRoomFor(m_output);
        return report;
    }

    std::string m_inputA, m_inputB, m_output;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeIntersectCommand() { return std::make_unique<IntersectCommand>(); }

} // namespace tool
