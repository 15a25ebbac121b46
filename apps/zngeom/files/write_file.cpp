#include "apps/zngeom/files/write_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/frame/failure.h"
#include "znGeom/files/pending_file.h"

namespace tool {

void checkIsOther(const std::string& input, const std::string& output)
{
    std::error_code error;
    if (std::filesystem::equivalent(input, output, error)) throw Failure(output + ": is read, and not overwritten");
}

void writeFile(std::string_view bytes, const std::string& path)
{
    if (path == standardStream) {
        if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
            throw Failure(std::string("standard output: can't be written: ") + std::strerror(errno));
        return;
    }
    znGeom::PendingFile file(znOS::Filename(path.c_str()));
    if (!file.write(bytes.data(), bytes.size()) || !file.commit()) throw Failure(path + ": " + file.message());
}

} // namespace tool
