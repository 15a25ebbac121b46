#include "apps/zngeom/files/gltf_document.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <filesystem>
#include <limits>

#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

constexpr std::string_view magic = "glTF";

std::uint32_t uint32At(std::string_view bytes, std::size_t position)
{
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[position + i]);
    return value;
}

/// A member of the root that this reader uses; others aren't kept.
bool isUsed(const nlohmann::json& key)
{
    static const std::array<std::string_view, 9> used{
        "asset", "scene", "scenes", "nodes", "meshes", "accessors", "bufferViews", "buffers", "extensionsRequired"};
    return std::find(used.begin(), used.end(), key.get_ref<const std::string&>()) != used.end();
}

int valueOfBase64(char c)
{
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+' || c == '-') return 62;
    return c == '/' || c == '_' ? 63 : -1;
}

std::string decodeBase64(std::string_view text)
{
    while (text.ends_with('=')) text.remove_suffix(1);
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    unsigned bits = 0, numBits = 0;
    for (const char c : text) {
        const int value = valueOfBase64(c);
        if (value < 0) throw Failure("a buffer has a letter in it that base64 doesn't have");
        bits = bits << 6 | static_cast<unsigned>(value);
        numBits += 6;
        if (numBits < 8) continue;
        numBits -= 8;
        bytes += static_cast<char>(bits >> numBits & 0xFF);
    }
    return bytes;
}

/// %20 becomes a blank.
std::string decodePercent(std::string_view text)
{
    const auto digit = [](char c) { return std::string_view("0123456789abcdef").find(static_cast<char>(c | 0x20)); };
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && digit(text[i + 1]) < 16 && digit(text[i + 2]) < 16) {
            decoded += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

enum ComponentType { Int8 = 5120, UInt8 = 5121, Int16 = 5122, UInt16 = 5123, UInt32 = 5125, Float32 = 5126 };

std::size_t sizeOf(int type)
{
    switch (type) {
    case Int8:
    case UInt8:
        return 1;
    case Int16:
    case UInt16:
        return 2;
    case UInt32:
    case Float32:
        return 4;
    default:
        throw Failure("an accessor has numbers of the unknown type " + std::to_string(type));
    }
}

std::uint32_t bitsAt(const unsigned char* bytes, std::size_t size)
{
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;) value = value << 8 | bytes[i];
    return value;
}

float floatAt(const unsigned char* bytes, int type, bool normalized)
{
    const std::uint32_t bits = bitsAt(bytes, sizeOf(type));
    switch (type) {
    case Int8: {
        const auto value = static_cast<float>(static_cast<std::int8_t>(bits));
        return normalized ? std::max(value / 127, -1.0F) : value;
    }
    case UInt8:
        return normalized ? static_cast<float>(bits) / 255 : static_cast<float>(bits);
    case Int16: {
        const auto value = static_cast<float>(static_cast<std::int16_t>(bits));
        return normalized ? std::max(value / 32767, -1.0F) : value;
    }
    case UInt16:
        return normalized ? static_cast<float>(bits) / 65535 : static_cast<float>(bits);
    case Float32:
        return std::bit_cast<float>(bits);
    default:
        return static_cast<float>(bits);
    }
}

std::size_t widthOf(const std::string& shape)
{
    static const std::map<std::string_view, std::size_t> widths{{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}};
    const auto found = widths.find(shape);
    return found == widths.end() ? 0 : found->second;
}

/// Owns a file of the system.
struct Descriptor
{
    ~Descriptor()
    {
        if (number >= 0) close(number);
    }
    int number;
};

} // namespace

GltfDocument::GltfDocument(std::string_view file, std::string folder)
    : m_folder(std::move(folder)), m_justified(file.size())
{
    parse(file.starts_with(magic) ? takeChunks(file) : file);
    if (!m_root.is_object() || !find(m_root, "asset")) throw Failure("this is not a glTF file");
    const Json* required = find(m_root, "extensionsRequired");
    for (std::size_t i = 0; required && required->is_array() && i < required->size(); ++i) {
        if (!(*required)[i].is_string()) continue;
        const std::string name = (*required)[i].get<std::string>();
        const bool isHarmless = name == "KHR_mesh_quantization" || name.starts_with("KHR_materials_") ||
                                name.starts_with("KHR_texture_") || name.starts_with("KHR_lights_");
        if (!isHarmless) throw Failure("needs the extension " + name + ", which can't be read");
    }
}

/// Keeps the binary chunk and returns the text.
std::string_view GltfDocument::takeChunks(std::string_view file)
{
    constexpr std::size_t headerSize = 12, chunkHeaderSize = 8;
    if (file.size() < headerSize + chunkHeaderSize) throw Failure("the file ends too soon");
    if (uint32At(file, 4) != 2)
        throw Failure("glTF of version " + std::to_string(uint32At(file, 4)) + " can't be read");
    const std::size_t total = uint32At(file, 8);
    if (total > file.size()) throw Failure("the file ends too soon");
    std::string_view text, rest = file.substr(headerSize, std::max(total, headerSize) - headerSize);
    while (rest.size() >= chunkHeaderSize) {
        const std::size_t length = uint32At(rest, 0);
        const std::string_view kind = rest.substr(4, 4);
        if (length > rest.size() - chunkHeaderSize) throw Failure("a chunk is larger than the file");
        const std::string_view content = rest.substr(chunkHeaderSize, length);
        if (kind == "JSON" && text.empty()) text = content;
        if (kind == std::string_view("BIN\0", 4) && m_binary.empty()) m_binary = content;
        rest.remove_prefix(chunkHeaderSize + length);
    }
    if (text.empty()) throw Failure("there is no JSON chunk");
    return text;
}

void GltfDocument::parse(std::string_view text)
{
    constexpr int deepest = 64;
    const auto callback = [](int depth, Json::parse_event_t event, Json& parsed) {
        if (depth > deepest) throw Failure("its JSON is nested deeper than any glTF file's");
        return depth != 1 || event != Json::parse_event_t::key || isUsed(parsed);
    };
    try {
        m_root = Json::parse(text.begin(), text.end(), callback);
    } catch (const Json::exception& problem) {
        const std::string_view reason(problem.what());
        throw Failure("its JSON can't be understood: " + std::string(reason.substr(0, 160)));
    }
}

const GltfDocument::Json* GltfDocument::find(const Json& object, const char* key)
{
    if (!object.is_object()) return nullptr;
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::size_t> GltfDocument::number(const Json& object, const char* key)
{
    constexpr double largest = 9007199254740992.0;
    const Json* found = find(object, key);
    if (!found) return std::nullopt;
    const double value = found->is_number() ? found->get<double>() : -1;
    if (!(value >= 0 && value <= largest) || value != static_cast<double>(static_cast<std::uint64_t>(value)))
        throw Failure(std::string(key) + " is no whole number");
    return static_cast<std::size_t>(value);
}

std::size_t GltfDocument::count(const char* list) const
{
    const Json* found = find(m_root, list);
    return found && found->is_array() ? found->size() : 0;
}

const GltfDocument::Json& GltfDocument::entry(const char* list, std::size_t index) const
{
    if (index >= count(list))
        throw Failure("number " + std::to_string(index) + " of the " + list + " is named, and there are " +
                      std::to_string(count(list)));
    return m_root[list][index];
}

void GltfDocument::claim(std::size_t bytes)
{
    constexpr std::size_t free = std::size_t(64) << 20, factor = 64;
    const std::size_t limit = std::max(free, factor * m_justified);
    if (bytes > limit - m_claimed)
        throw Failure("would become more than " + std::to_string(limit >> 20) + " megabytes, for a file of " +
                      std::to_string(m_justified) + " bytes");
    m_claimed += bytes;
}

// Buffers

/// What is wrong with the name of a file beside the mesh.
std::optional<std::string> GltfDocument::problemOfPath(const std::string& name) const
{
    if (name.empty() || name == "." || name == ".." || name.find_first_of("/\\:") != std::string::npos ||
        name.find('\0') != std::string::npos)
        return "is not the name of a file in the folder of the mesh";
    if (m_folder.empty()) return "lies in a file of its own, and the mesh comes from no folder";
    return std::nullopt;
}

/// Only a regular file, and not one outside the folder, even through a link.
std::string GltfDocument::readBeside(const std::string& name, std::size_t size)
{
    const std::string buffer = "the buffer " + name.substr(0, 60) + " ";
    if (const auto problem = problemOfPath(name)) throw Failure(buffer + *problem);
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::canonical(m_folder, error);
    const fs::path path = error ? fs::path() : fs::canonical(folder / name, error);
    if (error) throw Failure(buffer + "can't be read: " + error.message());
    if (path.parent_path() != folder) throw Failure(buffer + "is a link that leads out of the folder of the mesh");

    const Descriptor file{open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)};
    struct stat status;
    if (file.number < 0 || fstat(file.number, &status) != 0)
        throw Failure(buffer + "can't be read: " + std::strerror(errno));
    if (!S_ISREG(status.st_mode)) throw Failure(buffer + "is no regular file");
    if (static_cast<std::uint64_t>(status.st_size) < size) throw Failure(buffer + "ends too soon");
    std::string content(size, '\0');
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = read(file.number, content.data() + done, size - done);
        if (count <= 0) throw Failure(buffer + "can't be read");
        done += static_cast<std::size_t>(count);
    }
    return content;
}

std::string_view GltfDocument::buffer(std::size_t index)
{
    const Json& described = entry("buffers", index);
    const std::size_t size = number(described, "byteLength").value_or(0);
    const Json* uri = find(described, "uri");
    if (uri && !m_buffers.contains(index)) {
        if (!uri->is_string()) throw Failure("a buffer has no name");
        const std::string_view name = uri->get_ref<const std::string&>();
        if (name.starts_with("data:")) {
            const std::size_t comma = name.find(";base64,");
            if (comma == std::string_view::npos) throw Failure("a buffer is text, and not in base64");
            m_buffers[index] = decodeBase64(name.substr(comma + 8));
        } else {
            const std::string file = decodePercent(name);
            if (!m_opened.emplace(file, index).second) throw Failure("two buffers name the same file");
            m_buffers[index] = readBeside(file, size);
            m_justified += size;
        }
    }
    const std::string_view content = uri ? std::string_view(m_buffers[index]) : index == 0 ? m_binary : "";
    if (content.size() < size) throw Failure("buffer " + std::to_string(index) + " ends too soon");
    return content.substr(0, size);
}

// Accessors

/// \param place  has the offset within the view
GltfDocument::Run GltfDocument::run(const Json& place, std::size_t view, int type, std::size_t width, std::size_t count)
{
    const Json& described = entry("bufferViews", view);
    const std::string_view all = buffer(number(described, "buffer").value_or(0));
    const std::size_t viewOffset = number(described, "byteOffset").value_or(0);
    const std::size_t viewLength = number(described, "byteLength").value_or(0);
    if (viewOffset > all.size() || viewLength > all.size() - viewOffset)
        throw Failure("view " + std::to_string(view) + " reaches beyond its buffer");
    const std::size_t size = sizeOf(type) * width, offset = number(place, "byteOffset").value_or(0);
    const std::size_t given = number(described, "byteStride").value_or(0), stride = given == 0 ? size : given;
    if (stride < size) throw Failure("view " + std::to_string(view) + " has a stride that is too small");
    const bool fits = count == 0 || (offset <= viewLength && size <= viewLength - offset &&
                                     count - 1 <= (viewLength - offset - size) / stride);
    if (!fits) throw Failure("an accessor reaches beyond view " + std::to_string(view));
    const auto* bytes = reinterpret_cast<const unsigned char*>(all.data());
    return {count == 0 ? bytes : bytes + viewOffset + offset, stride, type};
}

std::size_t GltfDocument::numElements(std::size_t accessor) const
{
    return number(entry("accessors", accessor), "count").value_or(0);
}

/// \param convert  (bytes, component type) to a number
template <typename Number, typename Convert>
std::vector<Number> GltfDocument::elements(std::size_t accessor, std::size_t width, const Convert& convert)
{
    const Json& described = entry("accessors", accessor);
    const Json* shape = find(described, "type");
    if (!shape || !shape->is_string() || widthOf(shape->get<std::string>()) != width)
        throw Failure("accessor " + std::to_string(accessor) + " has another shape than it should have");
    const std::size_t count = numElements(accessor);
    if (count > std::numeric_limits<std::int32_t>::max()) throw Failure("an accessor has too many elements");
    claim(count * width * sizeof(Number));
    const auto type = static_cast<int>(number(described, "componentType").value_or(0));
    const std::size_t step = sizeOf(type);
    const auto view = number(described, "bufferView");
    std::optional<Run> base;
    if (view) base = run(described, *view, type, width, count);
    std::vector<Number> values(count * width);
    for (std::size_t i = 0; base && i < count; ++i)
        for (std::size_t j = 0; j < width; ++j)
            values[i * width + j] = convert(base->bytes + i * base->stride + j * step, type);
    overlaySparse(described, width, convert, values);
    return values;
}

/// Single elements that replace others.
template <typename Number, typename Convert>
void GltfDocument::overlaySparse(const Json& accessor, std::size_t width, const Convert& convert,
                                 std::vector<Number>& values)
{
    const Json* sparse = find(accessor, "sparse");
    if (!sparse) return;
    const Json *where = find(*sparse, "indices"), *what = find(*sparse, "values");
    const std::size_t count = number(*sparse, "count").value_or(0);
    if (!where || !what || count > values.size()) throw Failure("a sparse accessor lacks something");
    const auto type = static_cast<int>(number(accessor, "componentType").value_or(0));
    const auto indexType = static_cast<int>(number(*where, "componentType").value_or(0));
    const Run indexRun = run(*where, number(*where, "bufferView").value_or(0), indexType, 1, count);
    const Run valueRun = run(*what, number(*what, "bufferView").value_or(0), type, width, count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t index = bitsAt(indexRun.bytes + i * indexRun.stride, sizeOf(indexType));
        if (index >= values.size() / width) throw Failure("a sparse accessor names an element that isn't there");
        for (std::size_t j = 0; j < width; ++j)
            values[index * width + j] = convert(valueRun.bytes + i * valueRun.stride + j * sizeOf(type), type);
    }
}

std::vector<float> GltfDocument::floats(std::size_t accessor, std::size_t width)
{
    const Json* flag = find(entry("accessors", accessor), "normalized");
    const bool normalized = flag && flag->is_boolean() && flag->get<bool>();
    return elements<float>(accessor, width, [normalized](const unsigned char* bytes, int type) {
        return floatAt(bytes, type, normalized);
    });
}

std::vector<std::uint32_t> GltfDocument::indices(std::size_t accessor)
{
    return elements<std::uint32_t>(accessor, 1, [](const unsigned char* bytes, int type) {
        if (type != UInt8 && type != UInt16 && type != UInt32) throw Failure("indices are no whole numbers");
        return bitsAt(bytes, sizeOf(type));
    });
}

} // namespace tool
