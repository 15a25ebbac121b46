// tinyobjloader reads OBJ, without triangulating and without default colours.
#include "bench/checks.h"
#include "bench/suite.h"

#include <tiny_obj_loader.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using bench::Input;

struct ReadObj
{
    tinyobj::attrib_t attributes;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
};

std::unique_ptr<ReadObj> read(const std::string& file)
{
    auto result = std::make_unique<ReadObj>();
    std::string warnings, errors;
    tinyobj::LoadObj(&result->attributes, &result->shapes, &result->materials, &warnings, &errors, file.c_str(),
                     nullptr, false, false);
    return result;
}

bool readingAgrees(const Input& input)
{
    const auto result = read(input.objFile());
    if (result->shapes.size() != 1) return false;
    bench::Soup soup;
    soup.positions = result->attributes.vertices;
    for (const tinyobj::index_t& index : result->shapes[0].mesh.indices) soup.triangles.push_back(index.vertex_index);
    return bench::sameSurface(input.soup(), soup, input.soup().numVertices(), 1e-5);
}

void runReading(benchmark::State& state, const Input& input)
{
    bench::timeWork(
        state, [&] { return &input.objFile(); }, [](const std::string* file) { return read(*file); });
}

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("tinyobjloader", "2"),
    bench::measure({"read_obj", "tinyobjloader", readingAgrees, runReading}),
};

} // namespace
