// Flattening disks, with all that it needs: a copy, welding, borders; and the steps of conjugate gradients alone, as if
// nothing were eliminated.
#include "bench/compact.h"
#include "bench/flatten.h"
#include "znGeom/cache/mesh_cache.h"
#include "znGeom/parameterize/internal/conformal_map.h"
#include "znGeom/parameterize/reparameterize_mesh.h"
#include "znGeom/parameterize/uv_distortion.h"

#include <cmath>
#include <filesystem>
#include <random>

namespace bench {
namespace {

/// Waves and some noise over a square.
Soup heightField(int side)
{
    Soup soup;
    std::mt19937_64 random(1);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const double noise = static_cast<double>(random() >> 11) * 0x1p-53;
            const double height = 20 * std::sin(0.05 * x) * std::cos(0.04 * y) + 0.5 * noise;
            for (const double value : {double(x), double(y), height})
                soup.positions.push_back(static_cast<float>(value));
        }
    for (int y = 0; y + 1 < side; ++y)
        for (int x = 0; x + 1 < side; ++x) {
            const int corner = y * side + x;
            soup.triangles.insert(soup.triangles.end(), {corner, corner + 1, corner + side + 1});
            soup.triangles.insert(soup.triangles.end(), {corner, corner + side + 1, corner + side});
        }
    return soup;
}

} // namespace

const std::vector<DiskInput>& diskInputs()
{
    static const std::vector<DiskInput> present = [] {
        // 223 * 223 * 2 is 542 triangles short of a hundred thousand.
        std::vector<DiskInput> list = {{"height_field", [] { return heightField(224); }}};
        const std::filesystem::path folder = ZNGEOM_BENCH_MESHES;
        for (const char* name : {"camelhead", "face", "mountain"}) {
            const std::filesystem::path path = folder / (std::string(name) + ".obj");
            if (std::filesystem::exists(path)) list.push_back({name, [path] { return readObjFile(path); }});
        }
        return list;
    }();
    return present;
}

bool countDistortion(benchmark::State& state, const Soup& soup, const std::vector<float>& uvs)
{
    const auto mesh = toCompact(soup);
    if (uvs.size() != 2 * static_cast<std::size_t>(mesh->getNumVertices())) return false;
    mesh->allocUVArray();
    std::copy(uvs.begin(), uvs.end(), mesh->getUVsRaw());
    const znGeom::MeshUVDistortion distortion = znGeom::meshUVDistortion(*mesh);
    state.counters["mean_stretch"] = distortion.meanStretch;
    state.counters["largest_stretch"] = distortion.largestStretch;
    state.counters["flipped"] = distortion.numFlipped;
    state.counters["collapsed"] = distortion.numCollapsed;
    return true;
}

namespace {

class Flattening
{
public:
    explicit Flattening(const Soup& soup) : m_mesh(toCompact(soup)) {}
    bool run() { return znGeom::reparameterizeMesh(*m_mesh).flatten(); }
    std::vector<float> uvs() const
    {
        const float* first = m_mesh->getUVsRaw();
        return first ? std::vector<float>(first, first + 2 * m_mesh->getNumVertices()) : std::vector<float>();
    }

private:
    std::unique_ptr<znGeom::CompactMesh> m_mesh;
};

/// The system of a disk, put together.
class System
{
public:
    explicit System(const Soup& soup) : m_mesh(toCompact(soup))
    {
        const auto boundaries = m_cache.getBoundaries(*m_mesh);
        zn::vector<zn::vector<int>> loops;
        for (int i = 0; i < boundaries->size(); ++i) loops.append({boundaries->getStart(i), boundaries->getEnd(i)});
        znGeom::internal::ChartPins pins;
        const int outer = znGeom::internal::findOuterLoop(*m_mesh, loops, pins);
        const auto rotation =
            znGeom::internal::chartRotation(*m_mesh, loops[outer], pins, znOS::AppOutput::getInstance());
        znGeom::internal::ConformalMap map(*m_mesh, *m_cache.getAdjTris(*m_mesh), pins, rotation,
                                           znGeom::internal::chartScale(*m_mesh, pins));
        map.numberFreeVertices();
        znUtil::Progress progress;
        map.bridgeHoles(loops, outer, progress);
        znGeom::NVector rightHandSide(map.systemSize()), start(map.systemSize());
        m_solver = std::make_unique<znGeom::ConjugateGradient>(map.systemSize());
        map.assemble(progress, *m_solver, rightHandSide, start);
        m_solver->initDiagonalPreconditioner();
        m_solver->initialize(rightHandSide, start);
    }

    int run()
    {
        while (!m_solver->iterate(znLinear::epsilonTol, znLinear::epsilonTol).isDone()) {
        }
        return m_solver->getIteration();
    }

    /// What a step has to move: the entries that are not zero, with a number of 16 bits for each column, and the
    /// vectors: p and x and r and q and z and the diagonal are read, and p, x, r, q and z written.
    double bytesPerStep() const
    {
        double numEntries = 0;
        const int size = m_solver->A().size();
        for (int i = 0; i < size; ++i)
            for (const znGeom::SparseElement& element : m_solver->A().row(i)) numEntries += element.value != 0;
        return 10 * numEntries + 8.0 * 11 * size;
    }

private:
    std::unique_ptr<znGeom::CompactMesh> m_mesh;
    znGeom::SimpleMeshCache m_cache;
    std::unique_ptr<znGeom::ConjugateGradient> m_solver;
};

bool measureSteps()
{
    for (const DiskInput& input : diskInputs()) {
        const auto run = [&input](benchmark::State& state) {
            const Soup soup = input.make();
            std::unique_ptr<System> system;
            double numSteps = 1;
            timeWork(
                state,
                [&] {
                    system = std::make_unique<System>(soup);
                    return system.get();
                },
                [&](System* fresh) { return numSteps = fresh->run(); });
            state.counters["steps"] = numSteps;
            state.counters["bytes_per_step"] = system->bytesPerStep();
        };
        measureAlone("flatten_steps", "znGeom/" + input.name, run, 1, 2);
    }
    return true;
}

[[maybe_unused]] const bool listed[] = {measureFlatten<Flattening>("znGeom"), measureSteps()};

} // namespace
} // namespace bench
