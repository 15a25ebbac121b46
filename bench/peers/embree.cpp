// Embree: its tree built well and built fast, nearest points by point queries, and casts.
#include "bench/casts.h"
#include "bench/closest.h"
#include "bench/deviation.h"

#include <embree3/rtcore.h>

#include <atomic>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#include <sys/types.h>

namespace {

using bench::Input;

struct Release
{
    void operator()(RTCDevice device) const { rtcReleaseDevice(device); }
    void operator()(RTCScene scene) const { rtcReleaseScene(scene); }
};
using Device = std::unique_ptr<std::remove_pointer_t<RTCDevice>, Release>;
using Scene = std::unique_ptr<std::remove_pointer_t<RTCScene>, Release>;

/// What a device has taken for its scenes.
struct Memory
{
    std::atomic<std::ptrdiff_t> bytes{0};

    static bool count(void* memory, ssize_t bytes, bool)
    {
        static_cast<Memory*>(memory)->bytes += bytes;
        return true;
    }
};

RTCDevice deviceOnAllThreads(const Memory*& memory)
{
    static Memory taken;
    static const Device device = [] {
        Device made(rtcNewDevice(nullptr));
        rtcSetDeviceMemoryMonitorFunction(made.get(), Memory::count, &taken);
        return made;
    }();
    memory = &taken;
    return device.get();
}

/// The same arrays with a few bytes after them: it reads four floats where a position has three.
struct Buffers
{
    std::vector<float> positions;
    std::vector<int> triangles;

    explicit Buffers(const bench::Soup& soup) : positions(soup.positions), triangles(soup.triangles)
    {
        positions.resize(positions.size() + 4);
    }
    std::size_t numVertices() const { return (positions.size() - 4) / 3; }
    std::size_t numTriangles() const { return triangles.size() / 3; }
};

/// A scene of one mesh in the caller's arrays, ready for queries. The quality is set on both: the scene's chooses the
/// kind of tree, the mesh's how it is built.
Scene build(RTCDevice device, const Buffers& buffers, RTCBuildQuality quality)
{
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, buffers.positions.data(), 0,
                               3 * sizeof(float), buffers.numVertices());
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, buffers.triangles.data(), 0,
                               3 * sizeof(int), buffers.numTriangles());
    rtcSetGeometryBuildQuality(geometry, quality);
    rtcCommitGeometry(geometry);
    Scene scene(rtcNewScene(device));
    rtcSetSceneBuildQuality(scene.get(), quality);
    rtcAttachGeometry(scene.get(), geometry);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(scene.get());
    return scene;
}

struct Vec
{
    float x, y, z;

    friend Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec operator*(float factor, Vec a) { return {factor * a.x, factor * a.y, factor * a.z}; }
};

float dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

/// Ericson, "Real-Time Collision Detection" (2005), 5.1.5: by the region in which the point's foot lies.
Vec closestOnTriangle(Vec p, Vec a, Vec b, Vec c)
{
    const Vec ab = b - a, ac = c - a, ap = p - a;
    const float d1 = dot(ab, ap), d2 = dot(ac, ap);
    if (d1 <= 0 && d2 <= 0) return a;
    const Vec bp = p - b;
    const float d3 = dot(ab, bp), d4 = dot(ac, bp);
    if (d3 >= 0 && d4 <= d3) return b;
    const float vc = d1 * d4 - d3 * d2;
    if (vc <= 0 && d1 >= 0 && d3 <= 0) return a + (d1 / (d1 - d3)) * ab;
    const Vec cp = p - c;
    const float d5 = dot(ab, cp), d6 = dot(ac, cp);
    if (d6 >= 0 && d5 <= d6) return c;
    const float vb = d5 * d2 - d1 * d6;
    if (vb <= 0 && d2 >= 0 && d6 <= 0) return a + (d2 / (d2 - d6)) * ac;
    const float va = d3 * d6 - d5 * d4;
    if (va <= 0 && d4 - d3 >= 0 && d5 - d6 >= 0) return b + ((d4 - d3) / ((d4 - d3) + (d5 - d6))) * (c - b);
    const float denominator = 1 / (va + vb + vc);
    return a + (vb * denominator) * ab + (vc * denominator) * ac;
}

struct Query
{
    const float* corners;
    Vec point;
    float nearest2 = std::numeric_limits<float>::infinity();
    unsigned triangle = RTC_INVALID_GEOMETRY_ID;
};

bool visit(RTCPointQueryFunctionArguments* arguments)
{
    Query& query = *static_cast<Query*>(arguments->userPtr);
    const float* corners = query.corners + 9 * static_cast<std::size_t>(arguments->primID);
    const Vec a{corners[0], corners[1], corners[2]};
    const Vec b{corners[3], corners[4], corners[5]};
    const Vec c{corners[6], corners[7], corners[8]};
    const Vec gap = query.point - closestOnTriangle(query.point, a, b, c);
    const float distance2 = dot(gap, gap);
    if (distance2 >= query.nearest2) return false;
    query.nearest2 = distance2;
    query.triangle = arguments->primID;
    arguments->query->radius = std::sqrt(distance2);
    return true;
}

/// A copy of the corners, triangle by triangle, is kept beside the scene: queries are up to a third faster from it than
/// through the indices.
class EmbreeIndex
{
public:
    explicit EmbreeIndex(const bench::Soup& soup) : buffers_(soup), corners_(bench::blownUp(soup).positions)
    {
        const Memory* memory;
        const RTCDevice device = deviceOnAllThreads(memory);
        const std::ptrdiff_t before = memory->bytes;
        scene_ = build(device, buffers_, RTC_BUILD_QUALITY_MEDIUM);
        bytes_ = static_cast<std::size_t>(memory->bytes - before) + corners_.size() * sizeof(float);
    }

    std::size_t bytes() const { return bytes_; }

    void distances(const float* points, std::size_t count, double* distances) const
    {
        for (std::size_t i = 0; i < count; ++i) {
            const float* point = points + 3 * i;
            Query query{corners_.data(), {point[0], point[1], point[2]}};
            RTCPointQuery sphere{point[0], point[1], point[2], 0, std::numeric_limits<float>::infinity()};
            RTCPointQueryContext context;
            rtcInitPointQueryContext(&context);
            rtcPointQuery(scene_.get(), &sphere, &context, visit, &query);
            distances[i] = std::sqrt(static_cast<double>(query.nearest2));
        }
    }

private:
    Buffers buffers_;
    std::vector<float> corners_;
    Scene scene_;
    std::size_t bytes_ = 0;
};

class EmbreeCasts
{
public:
    explicit EmbreeCasts(const bench::Soup& soup) : buffers_(soup)
    {
        const Memory* memory;
        scene_ = build(deviceOnAllThreads(memory), buffers_, RTC_BUILD_QUALITY_MEDIUM);
    }

    void cast(const float* from, const float* to, std::size_t count, bool nearest, double* params) const
    {
        for (std::size_t i = 0; i < count; ++i, from += 3, to += 3) {
            RTCRayHit hit{};
            hit.ray = {from[0],  from[1], from[2], 0, to[0] - from[0], to[1] - from[1], to[2] - from[2], 0,
                       infinite, ~0u,     0,       0};
            hit.hit.geomID = RTC_INVALID_GEOMETRY_ID;
            RTCIntersectContext context;
            rtcInitIntersectContext(&context);
            if (nearest) {
                rtcIntersect1(scene_.get(), &context, &hit);
                params[i] = hit.hit.geomID == RTC_INVALID_GEOMETRY_ID ? -1 : static_cast<double>(hit.ray.tfar);
            } else {
                rtcOccluded1(scene_.get(), &context, &hit.ray);
                params[i] = hit.ray.tfar < 0 ? 0 : -1;
            }
        }
    }

private:
    static constexpr float infinite = std::numeric_limits<float>::infinity();

    Buffers buffers_;
    Scene scene_;
};

/// The distances of all vertices, an equal share on each of two threads.
std::vector<float> deviations(const EmbreeIndex& index, const std::vector<float>& points)
{
    std::vector<float> result(points.size() / 3);
    bench::shareOut(result.size(), 2, [&](std::size_t begin, std::size_t end) {
        std::vector<double> distances(end - begin);
        index.distances(&points[3 * begin], end - begin, distances.data());
        for (std::size_t i = begin; i < end; ++i) result[i] = static_cast<float>(distances[i - begin]);
    });
    return result;
}

bool measureDeviation()
{
    return bench::measure({"deviation", "Embree",
                           [](const Input& input) {
                               const auto distances =
                                   deviations(bench::madeOnce<EmbreeIndex>(input), bench::movedVertices(input.soup()));
                               return bench::deviationAgrees(input, distances);
                           },
                           [](benchmark::State& state, const Input& input) {
                               const EmbreeIndex& index = bench::madeOnce<EmbreeIndex>(input);
                               const std::vector<float> points = bench::movedVertices(input.soup());
                               bench::timeWork(
                                   state, [&] { return &points; },
                                   [&](const std::vector<float>* subject) { return deviations(index, *subject); });
                           },
                           3, bench::generatedInputs()});
}

/// Whether the scene's box is the mesh's.
bool boxAgrees(const Input& input, const Scene& scene)
{
    RTCBounds bounds;
    rtcGetSceneBounds(scene.get(), &bounds);
    const bench::Box box = bench::boxOf(input.soup());
    return bounds.lower_x == box.low[0] && bounds.lower_y == box.low[1] && bounds.lower_z == box.low[2] &&
           bounds.upper_x == box.high[0] && bounds.upper_y == box.high[1] && bounds.upper_z == box.high[2];
}

bool measureBuild(const char* work, const char* configuration, const char* who, RTCBuildQuality quality)
{
    const auto makeDevice = [=] { return Device(rtcNewDevice(configuration)); };
    return bench::measure({work, who,
                           [=](const Input& input) {
                               const Device device = makeDevice();
                               const Buffers buffers(input.soup());
                               return boxAgrees(input, build(device.get(), buffers, quality));
                           },
                           [=](benchmark::State& state, const Input& input) {
                               const Device device = makeDevice();
                               const Buffers buffers(input.soup());
                               bench::timeWork(
                                   state, [&] { return &buffers; },
                                   [&](const Buffers* subject) { return build(device.get(), *subject, quality); });
                           }});
}

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("Embree", RTC_VERSION_STRING),
    measureBuild("octree", nullptr, "Embree_default", RTC_BUILD_QUALITY_MEDIUM),
    measureBuild("octree", nullptr, "Embree_Morton", RTC_BUILD_QUALITY_LOW),
    measureBuild("octree_one_thread", "threads=1", "Embree_default", RTC_BUILD_QUALITY_MEDIUM),
    measureBuild("octree_one_thread", "threads=1", "Embree_Morton", RTC_BUILD_QUALITY_LOW),
    bench::measureClosest<EmbreeIndex>("Embree"),
    bench::measureCasts<EmbreeCasts>("Embree"),
    measureDeviation(),
};

} // namespace
