// Curvature at all vertices, the adjacency made before.
#include "bench/compact.h"
#include "bench/suite.h"
#include "znGeom/analysis.h"

#include <cmath>
#include <memory>
#include <vector>

namespace {

using bench::Input;
using znGeom::MeshCurvature;

struct Subject
{
    std::unique_ptr<znGeom::CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    std::vector<float> output[2];

    explicit Subject(const bench::Soup& soup) : mesh(bench::toCompact(soup))
    {
        znGeom::meshComputeNormals(*mesh);
        znGeom::meshAdjTris(*mesh, adjTris);
        znGeom::meshAdjVertices(*mesh, adjTris, adjVertices);
        for (auto& values : output) values.resize(static_cast<std::size_t>(mesh->getNumVertices()));
    }

    bool measure(MeshCurvature type, int to)
    {
        znGeom::meshCurvature(*mesh, adjTris, adjVertices, {}, type, output[to].data());
        return true;
    }
    bool measureBoth() { return measure(znGeom::GaussianCurvature, 0) && measure(znGeom::MeanCurvature, 1); }
};

/// The mean of the two principal curvatures is the mean curvature; of sphere-like and saddle-like places a bumpy torus
/// has many of both.
bool agrees(const Input& input)
{
    Subject subject(input.soup());
    subject.measure(znGeom::MinCurvature, 0);
    subject.measure(znGeom::MaxCurvature, 1);
    const std::vector<float> least = subject.output[0], most = subject.output[1];
    subject.measureBoth();
    const std::vector<float>&gaussian = subject.output[0], &mean = subject.output[1];
    std::size_t numSaddles = 0;
    for (std::size_t i = 0; i < mean.size(); ++i) {
        numSaddles += gaussian[i] < 0;
        if (std::abs(least[i] + most[i] - 2 * mean[i]) > 1e-4f * (std::abs(most[i]) + 1)) return false;
    }
    return numSaddles > mean.size() / 5 && numSaddles < mean.size() * 4 / 5;
}

template <class Work>
bool measureWork(const char* name, Work work)
{
    return bench::measure({name, "znGeom", agrees,
                           [=](benchmark::State& state, const Input& input) {
                               Subject subject(input.soup());
                               work(subject);
                               bench::timeWork(
                                   state, [&] { return &subject; }, [=](Subject* given) { return work(*given); });
                           },
                           0, bench::generatedInputs()});
}

[[maybe_unused]] const bool listed[] = {
    measureWork("curvature_mean", [](Subject& s) { return s.measure(znGeom::MeanCurvature, 0); }),
    measureWork("curvature_max", [](Subject& s) { return s.measure(znGeom::MaxCurvature, 0); }),
    measureWork("curvature_gauss_and_mean", [](Subject& s) { return s.measureBoth(); }),
};

} // namespace
