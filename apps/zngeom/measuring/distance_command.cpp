#include <algorithm>
#include <cmath>
#include <limits>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/command/picture_option.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/point_reader.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/measuring/mesh_index.h"
#include "apps/zngeom/measuring/surface_samples.h"
#include "apps/zngeom/picture/png_file.h"
#include "apps/zngeom/picture/value_files.h"
#include "apps/zngeom/picture/value_picture.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/spatial/queries/deviation.h"

namespace tool {

namespace {

/// The distances of some points of one mesh from another.
struct Distances
{
    std::size_t count = 0;
    double lowest = HUGE_VAL, highest = -HUGE_VAL; ///< with their signs
    double sum = 0, sumOfMagnitudes = 0, sumOfSquares = 0;
    double largest = -1; ///< in magnitude
    znLinear::PointFlt at;

    void add(double distance, const znGeom::MeshVertex& point)
    {
        ++count;
        lowest = std::min(lowest, distance);
        highest = std::max(highest, distance);
        sum += distance;
        sumOfMagnitudes += std::fabs(distance);
        sumOfSquares += distance * distance;
        if (std::fabs(distance) <= largest) return;
        largest = std::fabs(distance);
        at = point.asPointFlt();
    }
    void add(const Distances& other)
    {
        count += other.count;
        lowest = std::min(lowest, other.lowest);
        highest = std::max(highest, other.highest);
        sum += other.sum, sumOfMagnitudes += other.sumOfMagnitudes, sumOfSquares += other.sumOfSquares;
        if (other.largest > largest) largest = other.largest, at = other.at;
    }
    double mean() const { return sumOfMagnitudes / static_cast<double>(count); }
    double signedMean() const { return sum / static_cast<double>(count); }
    double rms() const { return std::sqrt(sumOfSquares / static_cast<double>(count)); }
};

void selectUsed(znGeom::CompactMesh& mesh)
{
    znGeom::BitVector& selection = mesh.getSelectedVertices();
    selection.resize(0);
    selection.resize(mesh.getNumVertices());
    for (int corner = 0; corner < 3 * mesh.getNumTriangles(); ++corner)
        selection.setBit(mesh.getTrianglesRaw()[corner]);
}

/// Of the box around both meshes.
double diagonalOf(const znGeom::CompactMesh& a, const znGeom::CompactMesh& b)
{
    double min[2][3], max[2][3], squares = 0;
    znGeom::meshBoundingBox(a, min[0], max[0]);
    znGeom::meshBoundingBox(b, min[1], max[1]);
    for (int axis = 0; axis < 3; ++axis) {
        const double side = std::max(max[0][axis], max[1][axis]) - std::min(min[0][axis], min[1][axis]);
        squares += side * side;
    }
    return std::sqrt(squares);
}

/// One way: from the points of a mesh to another mesh.
class OneWay
{
public:
    Distances distances;
    std::vector<float> values; ///< at the vertices; not a number where no triangle uses them

    /// \param spacing  0 for the vertices alone
    /// May be cancelled.
    OneWay(znGeom::CompactMesh& from, const znGeom::CompactMesh& to, double spacing, znUtil::Progress& progress)
    {
        Phases phases(progress);
        const MeshIndex index(to, phases.next(0.2));
        measureVertices(from, index, phases.next(spacing > 0 ? 0.2 : 0.8));
        if (spacing > 0) measureSamples(from, spacing, index, phases.next(0.6));
    }

private:
    void measureVertices(znGeom::CompactMesh& from, const MeshIndex& index, znUtil::Progress& progress)
    {
        selectUsed(from);
        values.resize(static_cast<std::size_t>(from.getNumVertices()));
        measure(from, index, true, values.data(), progress);
        for (std::size_t v = 0; v < values.size(); ++v) {
            float& value = values[v];
            if (value == znGeom::MeshDeviation::notMeasured)
                value = std::numeric_limits<float>::quiet_NaN();
            else
                distances.add(static_cast<double>(value), from.getVertices()[v]);
        }
    }

    void measureSamples(const znGeom::CompactMesh& from, double spacing, const MeshIndex& index,
                        znUtil::Progress& progress)
    {
        SurfaceSamples samples(from, spacing);
        znGeom::CompactMesh points;
        std::vector<float> atPoints;
        const double count = samples.count();
        double numDone = 0;
        while (samples.next(points)) {
            znUtil::Progress piece;
            numDone += points.getNumVertices();
            progress.subPhase(numDone / count - progress.get(), piece);
            atPoints.resize(static_cast<std::size_t>(points.getNumVertices()));
            measure(points, index, false, atPoints.data(), piece);
            for (std::size_t i = 0; i < atPoints.size(); ++i)
                distances.add(static_cast<double>(atPoints[i]), points.getVertices()[i]);
        }
    }

    static void measure(const znGeom::CompactMesh& from, const MeshIndex& to, bool selectedOnly, float* result,
                        znUtil::Progress& progress)
    {
        progress.setCaption("measuring");
        znGeom::MeshDeviation(to.mesh, {}, *to.octree, to.octreeTris, *to.tree, progress)
            .calculate(&from, {}, result, selectedOnly, false);
        checkCancelled(progress);
    }
};

std::string problemOfSpacing(const std::string& word)
{
    const std::optional<double> spacing = finiteNumber(word);
    return spacing && *spacing > 0 ? "" : "must be a distance above 0";
}

class DistanceCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("distance", "Measure how far two surfaces are apart");
        sub->footer(
            "Tells the largest distance and where it is, the mean and the root mean square: from the points of A to\n"
            "the surface of B, from those of B to A, and of both together; in the units of the files, and in parts\n"
            "of the diagonal of the box around both. The points are the vertices that triangles use; with --spacing\n"
            "also points of the triangles that are nowhere farther apart than that. All points count the same.\n"
            "With --signed distances are negative where the nearest place lies behind the triangles of A, or of B:\n"
            "on the other side from that from which they are wound counter-clockwise.\n"
            "-o writes the mesh A as a .ply file with the distance and a colour at each vertex, or a .txt file with\n"
            "a distance on each line. Colours go from blue to red over the distances from the 2nd to the 98th\n"
            "percentile, or over --range. Vertices that no triangle uses are magenta, and counted.");
        sub->add_option("A", m_paths[0], "A mesh file")->required();
        sub->add_option("B", m_paths[1], "Another one")->required();
        sub->add_flag("--signed", m_signed, "Tell sides apart");
        sub->add_option("--spacing", m_spacing, "Also measure at points of the triangles, at most this far apart")
            ->check(CLI::Validator(problemOfSpacing, ""))
            ->option_text("D");
        sub->add_option("-o,--output", m_output, "The file to write the distances of A to");
        addRangeOption(*sub, m_range);
        addPictureOptions(*sub, m_picture, "Draw A in the colours of its distances: a PNG file");
        addFormatOption(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        if (!m_output.empty()) checkValueFormat(m_output);
        if (!m_picture.path.empty()) checkPictureName(m_picture.path);
        const std::optional<ValueScale> range = rangeFrom(m_range);
        Phases phases(progress);
        LoadedMesh loaded[2];
        for (int i : {0, 1}) load(i, loaded[i], phases.next(0.15));
        checkSpacing(loaded);
        OneWay there(loaded[0].mesh, loaded[1].mesh, m_spacing, phases.next(0.3));
        const OneWay back(loaded[1].mesh, loaded[0].mesh, m_spacing, phases.next(0.3));
        if (!m_signed)
            for (float& value : there.values) value = std::fabs(value);
        phases.next(0.1).setCaption("writing");
        save(loaded[0].mesh, there.values, range ? *range : scaleOf(there.values));
        return describe(loaded, there, back.distances);
    }

private:
    void load(int which, LoadedMesh& loaded, znUtil::Progress& progress) const
    {
        loadMesh(m_paths[which], progress, loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_paths[which]);
        checkFinite(loaded.mesh.getVertices(), loaded.mesh.getNumVertices(), m_paths[which]);
        znGeom::meshComputeNormals(loaded.mesh);
    }

    /// A spacing may be given in the wrong unit; then there are more points than anybody can wait for.
    void checkSpacing(const LoadedMesh* loaded) const
    {
        constexpr double most = 1e9;
        if (m_spacing <= 0) return;
        for (int i : {0, 1}) {
            const double count = SurfaceSamples(loaded[i].mesh, m_spacing).count();
            if (count > most)
                throw Failure(m_paths[i] + ": a spacing of " + shownNumber(m_spacing) + " makes " +
                              shownNumber(std::round(count)) + " points, more than can be measured");
        }
    }

    void save(const znGeom::CompactMesh& mesh, const std::vector<float>& values, const ValueScale& scale) const
    {
        std::unique_ptr<PendingFile> picture;
        if (!m_picture.path.empty())
            picture = writePngAside(drawValues(mesh, values, scale, "distance", m_picture.size), m_picture.path);
        if (!m_output.empty()) saveValues(mesh, values, scale, m_output);
        if (picture) putInPlace(*picture, m_picture.path);
    }

    Report describe(const LoadedMesh* loaded, const OneWay& there, const Distances& back) const
    {
        Distances both = there.distances;
        both.add(back);
        const double diagonal = diagonalOf(loaded[0].mesh, loaded[1].mesh);
        Report report;
        report.add("a", m_paths[0]);
        report.add("b", m_paths[1]);
        report.add("measured_at", m_spacing > 0 ? "vertices and points at most " + shownNumber(m_spacing) + " apart"
                                                : std::string("vertices"));
        report.add("diagonal", rounded(diagonal));
        addWay("a_to_b", "a to b", there.distances, diagonal, report);
        addWay("b_to_a", "b to a", back, diagonal, report);
        addWay("both", "both", both, diagonal, report);
        if (!m_output.empty()) report.add("output", m_output);
        if (!m_picture.path.empty()) report.add("picture", m_picture.path);
        if (!m_output.empty() || !m_picture.path.empty())
            report.add("not_finite", std::count_if(there.values.begin(), there.values.end(),
                                                   [](float value) { return !std::isfinite(value); }));
        for (int i : {0, 1}) report.addNotes(loaded[i].notes);
        report.makeRoomFor(m_output);
        return report;
    }

    void addWay(const char* key, const std::string& label, const Distances& way, double diagonal, Report& report) const
    {
        Report::Value object = Report::Value::object();
        object["points"] = way.count;
        report.addForPeople(label + " points", std::to_string(way.count));
        const auto add = [&](const char* name, double value, const std::string& where = "") {
            const double part = diagonal > 0 ? value / diagonal : 0;
            object[name] = rounded(value);
            object[std::string(name) + "_part"] = rounded(part);
            std::string words = label + ' ' + name;
            std::replace(words.begin(), words.end(), '_', ' ');
            report.addForPeople(words,
                                shownNumber(value) + ", " + shownNumber(100 * part) + " % of the diagonal" + where);
        };
        const Report::Value at = {shortest(way.at.x), shortest(way.at.y), shortest(way.at.z)};
        object["largest_at"] = at;
        add("largest", way.largest, ", at " + at[0].dump() + ' ' + at[1].dump() + ' ' + at[2].dump());
        add("mean", way.mean());
        add("rms", way.rms());
        if (m_signed) add("lowest", way.lowest), add("highest", way.highest), add("signed_mean", way.signedMean());
        report.addForPrograms(key, std::move(object));
    }

    std::string m_paths[2], m_output;
    bool m_signed = false;
    double m_spacing = 0; ///< 0 for none
    std::optional<std::string> m_range;
    PictureOptions m_picture;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeDistanceCommand() { return std::make_unique<DistanceCommand>(); }

} // namespace tool
