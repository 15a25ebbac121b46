/// `tool::GltfDocument`: a glTF file with its buffers, every number in it checked before it is used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The text form or the binary one, in memory. Buffers are the binary chunk, data in the text itself, and regular files
/// that lie in the folder of the mesh; nothing else is ever opened. Everything fails with one line.
class GltfDocument
{
public:
    using Json = nlohmann::json;

    /// \param file    the whole content; must outlive the document
    /// \param folder  where buffers may be; empty when there is none
    GltfDocument(std::string_view file, std::string folder);

    /// A member of an object; null when it isn't there.
    static const Json* find(const Json& object, const char* key);
    /// A whole number of an object, none when it isn't there. Fails for anything else.
    static std::optional<std::size_t> number(const Json& object, const char* key);
    /// An entry of one of the lists of the document, by its number.
    const Json& entry(const char* list, std::size_t index) const;
    std::size_t count(const char* list) const;
    const Json& root() const { return m_root; }

    /// Makes sure that with this many more bytes, what the file expands to stays in proportion to it. A few megabytes
    /// are always allowed.
    void claim(std::size_t bytes);

    /// The numbers of an accessor, `width` for each element. Whole numbers that stand for fractions are converted to
    /// these.
    std::vector<float> floats(std::size_t accessor, std::size_t width);
    std::vector<std::uint32_t> indices(std::size_t accessor);
    /// How many elements an accessor has, without looking at them.
    std::size_t numElements(std::size_t accessor) const;

private:
    /// Where numbers are in a buffer.
    struct Run
    {
        const unsigned char* bytes;
        std::size_t stride;
        int type;
    };

    void parse(std::string_view text);
    std::string_view takeChunks(std::string_view file);
    std::string_view buffer(std::size_t index);
    std::string readBeside(const std::string& name, std::size_t size);
    Run run(const Json& place, std::size_t view, int type, std::size_t width, std::size_t count);
    std::optional<std::string> problemOfPath(const std::string& name) const;
    template <typename Number, typename Convert>
    std::vector<Number> elements(std::size_t accessor, std::size_t width, const Convert& convert);
    template <typename Number, typename Convert>
    void overlaySparse(const Json& accessor, std::size_t width, const Convert& convert, std::vector<Number>& values);

    Json m_root;
    std::string m_folder;
    std::string_view m_binary; ///< the chunk of a binary file
    std::map<std::size_t, std::string> m_buffers;
    std::map<std::string, std::size_t> m_opened; ///< the index of the buffer that each file provides
    std::size_t m_justified;                     ///< bytes that are really there
    std::size_t m_claimed = 0;
};

} // namespace tool
