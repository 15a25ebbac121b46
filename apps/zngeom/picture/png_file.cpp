#include "apps/zngeom/picture/png_file.h"

#include <png.h>

#include <cstring>

#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

static_assert(sizeof(Colour) == 3, "rows of pixels are handed over as bytes");

/// Freed in any case; `header` holds what libpng allocated.
class PngReader
{
public:
    PngReader() { m_header.version = PNG_IMAGE_VERSION; }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_image_free(&m_header); }

    Image read(const std::string& bytes)
    {
        constexpr png_uint_32 mostPixels = 1u << 26;
        if (!png_image_begin_read_from_memory(&m_header, bytes.data(), bytes.size())) throw Failure(m_header.message);
        if (m_header.width > mostPixels / m_header.height) throw Failure("has more than 67 million pixels");
        m_header.format = PNG_FORMAT_RGB;
        Image image{static_cast<int>(m_header.width), static_cast<int>(m_header.height), {}};
        image.pixels.resize(std::size_t{m_header.width} * m_header.height);
        const png_color behind{255, 255, 255};
        if (!png_image_finish_read(&m_header, &behind, image.pixels.data(), 0, nullptr))
            throw Failure(m_header.message);
        return image;
    }

private:
    png_image m_header{};
};

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

Image loadPng(const std::string& path, znUtil::Progress& progress)
try {
    progress.setCaption("reading");
    return PngReader().read(readFile(path, progress));
} catch (const Failure& failure) {
    throw Failure(inputName(path) + ": " + failure.what());
}

std::unique_ptr<PendingFile> writePngAside(const Image& image, const std::string& path)
{
    const std::string bytes = encode(image);
    auto file = std::make_unique<PendingFile>(znOS::Filename(path.c_str()));
    if (!file->write(bytes.data(), bytes.size()) || !file->finish()) throw Failure(path + ": " + file->message());
    return file;
}

} // namespace tool
