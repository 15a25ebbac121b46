#include <assimp/DefaultLogger.hpp>
#include <assimp/Importer.hpp>
#include <assimp/LogStream.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/scene.h>

#include <algorithm>
#include <utility>

#include "apps/zngeom/mesh_readers.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/read_file.h"

namespace tool {

namespace {

/// While it lives, Assimp's warnings and errors are gathered here.
class ImporterLog
{
public:
    ImporterLog()
    {
        Assimp::DefaultLogger::create("", Assimp::Logger::NORMAL, 0);
        Assimp::DefaultLogger::get()->attachStream(new Stream(m_lines), Assimp::Logger::Err | Assimp::Logger::Warn);
    }
    ~ImporterLog() { Assimp::DefaultLogger::kill(); }
    ImporterLog(const ImporterLog&) = delete;
    ImporterLog& operator=(const ImporterLog&) = delete;

    /// The first few different ones.
    const std::vector<std::string>& lines() const { return m_lines; }

private:
    struct Stream : Assimp::LogStream
    {
        explicit Stream(std::vector<std::string>& lines) : m_lines(lines) {}

        /// A message begins with its kind and the thread's number.
        void write(const char* message) override
        {
            std::string line(message);
            if (const std::size_t found = line.find(": "); found != std::string::npos) line.erase(0, found + 2);
            line.erase(std::min(line.find('\n'), line.size()));
            if (m_lines.size() < 8 && std::find(m_lines.begin(), m_lines.end(), line) == m_lines.end())
                m_lines.push_back(line);
        }

        std::vector<std::string>& m_lines;
    };

    std::vector<std::string> m_lines;
};

class ImporterProgress : public Assimp::ProgressHandler
{
public:
    explicit ImporterProgress(znUtil::Progress& progress) : m_progress(progress) {}

    bool Update(float percentage) override
    {
        if (percentage >= 0) m_progress.set(static_cast<double>(percentage));
        return !m_progress.cancelled();
    }

private:
    znUtil::Progress& m_progress;
};

/// One mesh in one place of the scene.
struct Placement
{
    const aiMesh* mesh;
    aiMatrix4x4 matrix;
};

/// All placements, in the order in which the scene's tree names them.
std::vector<Placement> collectPlacements(const aiScene& scene)
{
    std::vector<Placement> placements;
    std::vector<std::pair<const aiNode*, aiMatrix4x4>> open;
    if (scene.mRootNode) open.emplace_back(scene.mRootNode, scene.mRootNode->mTransformation);
    while (!open.empty()) {
        const auto [node, matrix] = open.back();
        open.pop_back();
        for (unsigned i = 0; i < node->mNumMeshes; ++i) placements.push_back({scene.mMeshes[node->mMeshes[i]], matrix});
        for (unsigned i = node->mNumChildren; i-- > 0;)
            open.emplace_back(node->mChildren[i], matrix * node->mChildren[i]->mTransformation);
    }
    return placements;
}

void appendVectors(const aiVector3D* vectors, unsigned count, std::vector<float>& result)
{
    for (unsigned i = 0; i < count; ++i) result.insert(result.end(), {vectors[i].x, vectors[i].y, vectors[i].z});
}

void appendVertices(const Placement& placement, MeshParts& parts)
{
    for (unsigned i = 0; i < placement.mesh->mNumVertices; ++i) {
        const aiVector3D position = placement.matrix * placement.mesh->mVertices[i];
        appendVectors(&position, 1, parts.positions);
    }
}

void appendNormals(const Placement& placement, MeshParts& parts)
{
    const aiMatrix3x3 toWorld = aiMatrix3x3(placement.matrix).Inverse().Transpose();
    for (unsigned i = 0; i < placement.mesh->mNumVertices; ++i) {
        aiVector3D normal = toWorld * placement.mesh->mNormals[i];
        appendVectors(&normal.NormalizeSafe(), 1, parts.normals);
    }
}

void appendUVs(const Placement& placement, MeshParts& parts)
{
    for (unsigned i = 0; i < placement.mesh->mNumVertices; ++i) {
        const aiVector3D& uv = placement.mesh->mTextureCoords[0][i];
        parts.uvs.insert(parts.uvs.end(), {uv.x, uv.y});
    }
}

/// A placement that mirrors turns the faces around, so that their fronts stay in front.
void appendFaces(const Placement& placement, std::size_t firstVertex, MeshParts& parts)
{
    const bool mirrored = aiMatrix3x3(placement.matrix).Determinant() < 0;
    std::vector<int> corners;
    for (unsigned i = 0; i < placement.mesh->mNumFaces; ++i) {
        const aiFace& face = placement.mesh->mFaces[i];
        corners.clear();
        for (unsigned corner = 0; corner < face.mNumIndices; ++corner) {
            if (face.mIndices[corner] >= placement.mesh->mNumVertices)
                throw Failure("face " + std::to_string(i + 1) + " names vertex " +
                              std::to_string(face.mIndices[corner]) + ", its mesh has " +
                              std::to_string(placement.mesh->mNumVertices) + ", counted from 0");
            corners.push_back(static_cast<int>(firstVertex + face.mIndices[corner]));
        }
        if (mirrored) std::reverse(corners.begin(), corners.end());
        parts.addFace(corners.data(), corners.size());
    }
}

/// How many of the meshes have a channel: a channel of the whole mesh needs all.
template <typename Has>
bool allHave(const std::vector<Placement>& placements, const char* name, MeshParts& parts, Has has)
{
    const auto count = std::count_if(placements.begin(), placements.end(), has);
    const bool all = count > 0 && count == static_cast<std::ptrdiff_t>(placements.size());
    if (count > 0 && !all) parts.lost.push_back(std::string(name) + ": not in all meshes of the scene, not kept");
    return all;
}

bool hasNormals(const Placement& placement) { return placement.mesh->HasNormals(); }
bool hasUVs(const Placement& placement) { return placement.mesh->HasTextureCoords(0); }
bool hasColours(const Placement& placement) { return placement.mesh->HasVertexColors(0); }

/// Several meshes become one.
void joinScene(const aiScene& scene, bool takeChannels, znUtil::Progress& progress, MeshParts& parts)
{
    const std::vector<Placement> placements = collectPlacements(scene);
    const bool normals = takeChannels && allHave(placements, "normals", parts, hasNormals);
    const bool uvs = takeChannels && allHave(placements, "texture coordinates", parts, hasUVs);
    for (const Placement& placement : placements) {
        checkCancelled(progress);
        const std::size_t firstVertex = parts.numVertices();
        if (firstVertex + placement.mesh->mNumVertices > maxElements) throw Failure("the mesh is too large");
        appendVertices(placement, parts);
        if (normals) appendNormals(placement, parts);
        if (uvs) appendUVs(placement, parts);
        appendFaces(placement, firstVertex, parts);
    }
    if (std::any_of(placements.begin(), placements.end(), hasColours)) parts.lost.push_back("colours: not kept");
}

/// \param takeChannels  false for a format whose normals belong to faces
void readScene(const std::string& path, bool takeChannels, znUtil::Progress& progress, MeshParts& parts)
{
    const ImporterLog log;
    Assimp::Importer importer;
    importer.SetProgressHandler(new ImporterProgress(progress));
    const aiScene* scene = importer.ReadFile(path, 0);
    checkCancelled(progress);
    if (!scene) {
        const std::string reason = importer.GetErrorString();
        throw Failure("can't be understood: " + reason.substr(0, reason.find('\n')));
    }
    for (const std::string& line : log.lines()) {
        if (line.find("out-of-range indices") != std::string::npos)
            throw Failure("a face names a vertex that the file doesn't have");
        parts.lost.push_back("importer: " + line);
    }
    joinScene(*scene, takeChannels, progress, parts);
}

/// The importer takes a text that is cut off for a shorter one.
void checkStlIsWhole(const std::string& file)
{
    constexpr std::size_t headerSize = 84, recordSize = 50;
    if (file.size() >= headerSize) {
        const auto byte = [&file](std::size_t i) { return std::size_t(static_cast<unsigned char>(file[80 + i])); };
        const std::size_t numTriangles = byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
        if (file.size() == headerSize + numTriangles * recordSize) return;
    }
    const bool isText = file.starts_with("solid") && file.find("facet") != std::string::npos;
    if (!isText) throw Failure("this is neither a text STL file nor a whole binary one");
    if (file.find("endsolid") == std::string::npos) throw Failure("the file ends too soon, without its word endsolid");
}

} // namespace

void readStl(const std::string& path, znUtil::Progress& progress, LoadedMesh& result)
{
    checkReadable(path);
    checkStlIsWhole(readFile(path, progress));
    MeshParts parts;
    readScene(path, false, progress, parts);
    buildMesh(parts, 0, result);
}

void readGltf(const std::string& path, znUtil::Progress& progress, LoadedMesh& result)
{
    checkReadable(path);
    MeshParts parts;
    readScene(path, true, progress, parts);
    buildMesh(parts, 0, result);
}

} // namespace tool
