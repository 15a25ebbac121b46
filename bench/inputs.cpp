#include "bench/inputs.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

namespace bench {
namespace {

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zngeom-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            std::fprintf(stderr, "no temporary folder can be made in %s\n", pattern.c_str());
            std::exit(1);
        }
        path_ = pattern;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

std::string contentOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string_view takeWord(std::string_view& text)
{
    const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    text.remove_prefix(first);
    const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n"));
    text.remove_prefix(word.size());
    return word;
}

template <class Number>
Number takeNumber(std::string_view& text)
{
    const std::string_view word = takeWord(text);
    Number value{};
    std::from_chars(word.data(), word.data() + word.size(), value);
    return value;
}

enum class TextForm { obj, plain, off };

std::string writeText(const Soup& soup, const std::string& name, TextForm form)
{
    const std::string file = temporaryFile(name);
    std::FILE* out = std::fopen(file.c_str(), "w");
    if (out == nullptr) {
        std::fprintf(stderr, "%s cannot be written\n", file.c_str());
        std::exit(1);
    }
    if (form == TextForm::off) std::fprintf(out, "OFF\n%d %d 0\n", soup.numVertices(), soup.numTriangles());
    if (form == TextForm::plain) std::fprintf(out, "%d %d\n", soup.numVertices(), soup.numTriangles());
    const char* vertexStart = form == TextForm::obj ? "v " : "";
    for (std::size_t i = 0; i < soup.positions.size(); i += 3)
        std::fprintf(out, "%s%.6g %.6g %.6g\n", vertexStart, static_cast<double>(soup.positions[i]),
                     static_cast<double>(soup.positions[i + 1]), static_cast<double>(soup.positions[i + 2]));
    const char* faceStart = form == TextForm::obj ? "f" : "3";
    const int first = form == TextForm::obj ? 1 : 0;
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        std::fprintf(out, "%s %d %d %d\n", faceStart, soup.triangles[i] + first, soup.triangles[i + 1] + first,
                     soup.triangles[i + 2] + first);
    std::fclose(out);
    return file;
}

const std::string& writtenOnce(std::string& file, const Input& input, const char* ending, TextForm form)
{
    if (file.empty()) file = writeText(input.soup(), input.name() + ending, form);
    return file;
}

} // namespace

Input::Input(std::string name, std::function<Soup()> make) : name_(std::move(name)), make_(std::move(make)) {}

const Soup& Input::soup() const
{
    if (soup_.positions.empty()) soup_ = make_();
    return soup_;
}

const Soup& Input::blownUp() const
{
    if (blownUp_.positions.empty()) blownUp_ = bench::blownUp(soup());
    return blownUp_;
}

const std::string& Input::objFile() const { return writtenOnce(objFile_, *this, ".obj", TextForm::obj); }
const std::string& Input::plainFile() const { return writtenOnce(plainFile_, *this, ".txt", TextForm::plain); }
const std::string& Input::offFile() const { return writtenOnce(offFile_, *this, ".off", TextForm::off); }

const std::vector<Input>& inputs()
{
    static const std::vector<Input> present = [] {
        std::vector<Input> list;
        const std::filesystem::path folder = ZNGEOM_BENCH_MESHES;
        const auto addFile = [&](const char* name, const char* file) {
            const std::filesystem::path path = folder / file;
            if (std::filesystem::exists(path)) list.emplace_back(name, [path] { return readObjFile(path); });
        };
        addFile("bunny", "stanford-bunny.obj");
        addFile("ogre", "ogre.obj");
        list.emplace_back("torus_small", [] { return bumpyTorus(187, 187); });
        // 707 * 707 * 2 is 302 triangles short of a million.
        list.emplace_back("torus", [] { return bumpyTorus(707, 707); });
        list.emplace_back("torus_shuffled", [] { return shuffled(bumpyTorus(707, 707)); });
        return list;
    }();
    return present;
}

std::string temporaryFile(const std::string& name)
{
    static const TemporaryFolder folder;
    return (folder.path() / name).string();
}

Soup readObjFile(const std::filesystem::path& file)
{
    const std::string content = contentOf(file);
    std::string_view rest = content;
    Soup soup;
    while (!rest.empty()) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::string_view kind = takeWord(line);
        if (kind == "v") {
            for (int axis = 0; axis < 3; ++axis) soup.positions.push_back(takeNumber<float>(line));
        } else if (kind == "f") {
            const int a = takeNumber<int>(line), b = takeNumber<int>(line), c = takeNumber<int>(line);
            if (takeWord(line).empty()) soup.triangles.insert(soup.triangles.end(), {a - 1, b - 1, c - 1});
        }
    }
    return soup;
}

Soup readPlainFile(const std::filesystem::path& file)
{
    const std::string content = contentOf(file);
    std::string_view rest = content;
    const bool off = rest.starts_with("OFF");
    if (off) takeWord(rest);
    Soup soup;
    soup.positions.resize(3 * static_cast<std::size_t>(takeNumber<int>(rest)));
    soup.triangles.resize(3 * static_cast<std::size_t>(takeNumber<int>(rest)));
    if (off) takeWord(rest);
    for (float& value : soup.positions) value = takeNumber<float>(rest);
    for (std::size_t i = 0; i < soup.triangles.size(); ++i) {
        if (i % 3 == 0) takeWord(rest);
        soup.triangles[i] = takeNumber<int>(rest);
    }
    return soup;
}

} // namespace bench
