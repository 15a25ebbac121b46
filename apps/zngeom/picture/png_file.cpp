#include "apps/zngeom/picture/png_file.h"

#include <png.h>

#include <cstring>

#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

static_assert(sizeof(Colour) == 3, "rows of pixels are handed over as bytes");

std::string encode(const Image& image)
{
    png_image header;
    std::memset(&header, 0, sizeof header);
    header.version = PNG_IMAGE_VERSION;
    header.width = static_cast<png_uint_32>(image.width);
    header.height = static_cast<png_uint_32>(image.height);
    header.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(header);
    std::string bytes(size, '\0');
    if (!png_image_write_to_memory(&header, bytes.data(), &size, 0, image.pixels.data(), 0, nullptr))
        throw Failure(header.message);
    bytes.resize(size);
    return bytes;
}

} // namespace

void checkPictureName(const std::string& path)
{
    if (!path.ends_with(".png") && !path.ends_with(".PNG"))
        throw Failure(path + ": pictures are PNG files, whose names end in .png");
}

std::unique_ptr<PendingFile> writePngAside(const Image& image, const std::string& path)
{
    const std::string bytes = encode(image);
    auto file = std::make_unique<PendingFile>(znOS::Filename(path.c_str()));
    if (!file->write(bytes.data(), bytes.size()) || !file->finish()) throw Failure(path + ": " + file->message());
    return file;
}

} // namespace tool
