#include <algorithm>
#include <cmath>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/listing.h"
#include "apps/zngeom/files/ray_reader.h"
#include "apps/zngeom/measuring/mesh_index.h"
#include "znGeom/foundation/mesh/mesh_transform.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/spatial/queries/ray_tracer.h"

namespace tool {

namespace {

struct Hit
{
    bool isHit = false;
    double distance = 0; ///< in the units of the file
    znGeom::MeshCoord place;
};

/// The exponent of the power of two that makes a mesh's diagonal about 2^15. There a triangle is seen if its sides are
/// no longer than the last digit of the coordinates, and a ray in the plane of one as large as the mesh is still known
/// to be that; and no digit is lost on the way.
int exponentFor(const znGeom::CompactMesh& mesh)
{
    constexpr int wanted = 15;
    double min[3], max[3];
    znGeom::meshBoundingBox(mesh, min, max);
    const double diagonal = std::hypot(max[0] - min[0], max[1] - min[1], max[2] - min[2]);
    return diagonal > 0 ? wanted - std::ilogb(diagonal) : 0;
}

class Caster
{
public:
    /// Scales the mesh. May be cancelled.
    Caster(znGeom::CompactMesh& mesh, bool findNearest, znUtil::Progress& progress)
        : m_scale(scaleMesh(mesh)), m_findNearest(findNearest), m_index(mesh, progress)
    {}

    void cast(const TextRay* rays, int count, Hit* hits) const
    {
        znUtil::parallelFor(znUtil::ThreadPool::get(), count, [&](znUtil::Slice slice, int) {
            znGeom::RayTracer tracer(*m_index.octree, m_index.octreeTris, &m_index.mesh, *m_index.tree);
            tracer.setFindNearestHit(m_findNearest);
            for (int i = slice.begin; i < slice.end; ++i) hits[i] = hitOf(tracer, rays[i]);
        });
    }

private:
    static double scaleMesh(znGeom::CompactMesh& mesh)
    {
        const int exponent = exponentFor(mesh);
        // In two steps, since a float has no room for what the smallest of meshes need.
        for (const int part : {exponent / 2, exponent - exponent / 2})
            znGeom::meshTransform(mesh, znLinear::AffineMatrixFlt(std::ldexp(1.0f, part)));
        return std::ldexp(1.0, exponent);
    }

    Hit hitOf(znGeom::RayTracer& tracer, const TextRay& ray) const
    {
        const znLinear::PointFlt origin((ray.origin.asVector() * m_scale).asPoint());
        if (!tracer.intersect(origin, ray.direction)) return {};
        return {true, tracer.intersectionDist() / m_scale, tracer.intersectionCoord()};
    }

    double m_scale;
    bool m_findNearest;
    MeshIndex m_index;
};

void appendHit(std::string& text, const Hit& hit, bool json)
{
    if (!hit.isHit) {
        text += json ? "null" : "-";
        return;
    }
    appendNumber(text += json ? "{\"distance\":" : "", hit.distance);
    text += (json ? ",\"triangle\":" : " ") + std::to_string(hit.place.triangle) + (json ? ",\"weights\":[" : " ");
    for (int i = 0; i < 3; ++i) appendNumber(text += i == 0 ? "" : json ? "," : " ", hit.place.weights[i]);
    if (json) text += "]}";
}

class RayCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("ray", "Tell for each of some rays which triangle it hits");
        sub->footer(
            "A text has the x y z of an origin and of a direction on each line, divided by blanks or commas; # starts\n"
            "a comment. Writes one line for each ray, in their order: the distance in the units of the file, the\n"
            "number of the nearest triangle, and the weights of its three corners, which add up to 1; a single - for\n"
            "a ray that hits nothing. Either side of a triangle is hit. Triangles are counted from 0 in the order of\n"
            "the mesh file, a polygon by the triangles of its fan. With --any the lines are hit and miss, which\n"
            "takes less time. --json writes an array: objects with distance, triangle and weights, and null; with\n"
            "--any true and false. With -o the lines go to a file, and the numbers of the whole are printed.\n"
            "Origins are taken in the precision of meshes, that of a float. The unit of the mesh does not matter.");
        m_files.addTo(*sub, "RAYS", "A text file with rays; - is standard input");
        sub->add_flag("--any", m_any, "Tell only whether something is hit");
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        Phases phases(progress);
        LoadedMesh loaded;
        m_files.load(loaded, phases.next(0.3));
        const std::vector<TextRay> rays = loadRays(m_files.questions, phases.next(0.1));
        const Caster caster(loaded.mesh, !m_any, phases.next(0.2));
        std::vector<Hit> hits(rays.size());
        znUtil::Progress& phase = phases.next(0.4);
        phase.setCaption("casting");
        answerInPieces(rays.size(), phase, [&](std::size_t begin, std::size_t end) {
            caster.cast(&rays[begin], static_cast<int>(end - begin), &hits[begin]);
        });
        Report report = m_files.answer(hits.size(), [&](std::string& text, std::size_t i, bool json) {
            if (m_any)
                text += json ? (hits[i].isHit ? "true" : "false") : (hits[i].isHit ? "hit" : "miss");
            else
                appendHit(text, hits[i], json);
        });
        if (m_files.isToFile()) describe(hits, loaded, report);
        return report;
    }

private:
    void describe(const std::vector<Hit>& hits, const LoadedMesh& loaded, Report& report) const
    {
        const auto count = std::count_if(hits.begin(), hits.end(), [](const Hit& hit) { return hit.isHit; });
        report.add("rays", hits.size());
        report.add("hits", count);
        if (!m_any && count > 0) {
            double smallest = HUGE_VAL, largest = 0;
            for (const Hit& hit : hits) {
                if (!hit.isHit) continue;
                smallest = std::min(smallest, hit.distance);
                largest = std::max(largest, hit.distance);
            }
            report.add("distance_min", rounded(smallest));
            report.add("distance_max", rounded(largest));
        }
        report.addNotes(loaded.notes);
    }

    Listing m_files;
    bool m_any = false;
};

} // namespace

std::unique_ptr<Command> makeRayCommand() { return std::make_unique<RayCommand>(); }

} // namespace tool
