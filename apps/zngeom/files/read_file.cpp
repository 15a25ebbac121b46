#include "apps/zngeom/files/read_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File openToRead(const std::string& path)
{
    if (path == standardStream) return File(stdin, [](std::FILE*) { return 0; });
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw Failure("is a folder");
    File file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file && errno == EINTR) throw Cancelled();
    if (!file) throw Failure(std::string("can't be read: ") + std::strerror(errno));
    return file;
}

} // namespace

std::string readFile(const std::string& path, const znUtil::Progress& progress)
{
    const File file = openToRead(path);
    std::string content;
    std::error_code error;
    const auto size = path == standardStream ? 0 : std::filesystem::file_size(path, error);
    if (!error) content.reserve(size);

    char chunk[1 << 16];
    while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, file.get())) {
        checkCancelled(progress);
        content.append(chunk, count);
    }
    checkCancelled(progress);
    if (std::ferror(file.get()) != 0) throw Failure(std::string("can't be read: ") + std::strerror(errno));
    if (content.empty()) throw Failure("is empty");
    return content;
}

} // namespace tool
