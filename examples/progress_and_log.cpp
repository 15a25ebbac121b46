// Listens to the debug channel, watches the progress of a call, writes a parallel loop, and cancels it from another
// thread.
#include <znGeom/znGeom.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

/// A soup of triangles that all share one place, so that welding has something to sort.
void makeSoup(znGeom::CompactMesh& mesh, int numTriangles)
{
    std::vector<znGeom::MeshVertex> vertices;
    std::vector<int> triangles;
    for (int i = 0; i < 3 * numTriangles; ++i) {
        vertices.push_back({i % 3 == 0 ? 0.f : static_cast<float>(i), 0.f, 0.f});
        triangles.push_back(i);
    }
    mesh = znGeom::CompactMesh(3 * numTriangles, vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(numTriangles, triangles.data());
}

/// Welds, and shows what the library says meanwhile.
bool watchWelding()
{
    znGeom::CompactMesh mesh;
    makeSoup(mesh, 20000);

    znGeom::debugChannel().setSink([](const std::string& text) { std::printf("log: %s", text.c_str()); });
    double reached = 0;
    znUtil::Progress progress;
    progress.setObserver([&reached](double fraction, const char*) { reached = fraction; });

    znGeom::meshCompact(mesh, progress);

    znGeom::debugChannel().setSink({});
    std::printf("progress: %g, vertices: %d\n", reached, mesh.getNumVertices());
    return reached == 1 && mesh.getNumVertices() == 40001;
}

/// A loop of the library's kind that nobody waits for: it does its work again and again until it is cancelled.
class EndlessSum : public znUtil::ThreadedAlg
{
public:
    explicit EndlessSum(const std::vector<int>& numbers) : m_numbers(numbers) {}

    /// One slot per thread: a body writes only its own.
    void initialize(int numThreads) override { m_sums.assign(static_cast<size_t>(numThreads), 0); }

    void execute(int threadIndex, int numThreads) override
    {
        const znUtil::Slice slice(static_cast<int>(m_numbers.size()), threadIndex, numThreads);
        while (!cancelled(threadIndex)) {
            for (int i = slice.begin; i < slice.end; ++i) {
                m_sums[static_cast<size_t>(threadIndex)] += m_numbers[static_cast<size_t>(i)];
            }
            running = true;
        }
    }

    std::atomic<bool> running{false};

private:
    const std::vector<int>& m_numbers;
    std::vector<long long> m_sums;
};

bool cancelFromAnotherThread()
{
    const std::vector<int> numbers(1000, 1);
    EndlessSum sum(numbers);
    znUtil::Progress progress;
    sum.setProgress(&progress);

    std::thread user([&] {
        while (!sum.running) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        progress.cancel();
    });
    znUtil::ThreadPool::get().run(sum); // returns because of the cancel
    user.join();

    std::printf("the loop on %d threads was cancelled\n", znUtil::ThreadPool::get().getNumThreads());
    return progress.cancelled();
}

} // namespace

int main()
{
    const bool welded = watchWelding();
    const bool cancelled = cancelFromAnotherThread();
    return welded && cancelled ? 0 : 1;
}
