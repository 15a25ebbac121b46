// Reading and writing the plain format and OBJ.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/suite.h"
#include "znGeom/files/mesh_files.h"

#include <filesystem>
#include <memory>
#include <string>

namespace {

using bench::Input;
using znGeom::CompactMesh;
using znOS::Filename;

using Read = void (*)(CompactMesh&, const Filename&);
using Write = void (*)(const CompactMesh&, const Filename&);
using FileOf = const std::string& (Input::*)() const;

void readPlain(CompactMesh& mesh, const Filename& file) { znGeom::meshRead(mesh, file); }
void readObj(CompactMesh& mesh, const Filename& file) { znGeom::meshReadObj(mesh, file); }
void writePlain(const CompactMesh& mesh, const Filename& file) { znGeom::meshWrite(mesh, file); }
void writeObj(const CompactMesh& mesh, const Filename& file) { znGeom::meshWriteObj(mesh, file); }

std::unique_ptr<CompactMesh> readNew(Read read, const std::string& file)
{
    auto mesh = std::make_unique<CompactMesh>();
    read(*mesh, Filename(file.c_str()));
    return mesh;
}

bool measureReading(const char* work, Read read, FileOf fileOf)
{
    return bench::measure({work, "znGeom",
                           [=](const Input& input) {
                               const auto mesh = readNew(read, (input.*fileOf)());
                               return bench::sameSurface(input.soup(), bench::toSoup(*mesh), input.soup().numVertices(),
                                                         1e-5);
                           },
                           [=](benchmark::State& state, const Input& input) {
                               bench::timeWork(
                                   state, [&] { return &(input.*fileOf)(); },
                                   [=](const std::string* file) { return readNew(read, *file); });
                           }});
}

bool measureWriting(const char* work, Write write, bench::Soup (*readBack)(const std::filesystem::path&))
{
    return bench::measure({work, "znGeom",
                           [=](const Input& input) {
                               const std::string file = bench::temporaryFile("znGeom");
                               write(*bench::toCompact(input.soup()), Filename(file.c_str()));
                               return bench::sameSurface(input.soup(), readBack(file), input.soup().numVertices(),
                                                         1e-5);
                           },
                           [=](benchmark::State& state, const Input& input) {
                               const auto mesh = bench::toCompact(input.soup());
                               const std::string file = bench::temporaryFile("znGeom");
                               bench::timeWork(
                                   state, [&] { return std::filesystem::remove(file); },
                                   [&](bool) {
                                       write(*mesh, Filename(file.c_str()));
                                       return true;
                                   });
                           }});
}

[[maybe_unused]] const bool listed[] = {
    measureReading("read_plain", readPlain, &Input::plainFile),
    measureReading("read_obj", readObj, &Input::objFile),
    measureWriting("write_plain", writePlain, bench::readPlainFile),
    measureWriting("write_obj", writeObj, bench::readObjFile),
};

} // namespace
