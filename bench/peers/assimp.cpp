// Assimp imports OBJ, without any post-processing.
#include "bench/checks.h"
#include "bench/suite.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <assimp/version.h>

#include <memory>
#include <string>

namespace {

using bench::Input;

std::unique_ptr<Assimp::Importer> read(const std::string& file)
{
    auto importer = std::make_unique<Assimp::Importer>();
    importer->ReadFile(file, 0);
    return importer;
}

/// It gives each corner a vertex of its own, so that only the corners can be compared.
bool readingAgrees(const Input& input)
{
    const auto importer = read(input.objFile());
    const aiScene* scene = importer->GetScene();
    if (scene == nullptr || scene->mNumMeshes != 1) return false;
    const aiMesh& mesh = *scene->mMeshes[0];
    return bench::sameCorners(input.soup(), static_cast<int>(mesh.mNumFaces), 1e-5, [&](std::size_t corner, int axis) {
        return mesh.mVertices[mesh.mFaces[corner / 3].mIndices[corner % 3]][static_cast<unsigned>(axis)];
    });
}

void runReading(benchmark::State& state, const Input& input)
{
    bench::timeWork(
        state, [&] { return &input.objFile(); }, [](const std::string* file) { return read(*file); });
}

std::string version()
{
    return std::to_string(aiGetVersionMajor()) + "." + std::to_string(aiGetVersionMinor()) + "." +
           std::to_string(aiGetVersionPatch());
}

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("Assimp", version()),
    bench::measure({"read_obj", "Assimp", readingAgrees, runReading}),
};

} // namespace
