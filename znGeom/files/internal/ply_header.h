/// The header of a PLY file: which numbers its body is made of.
#pragma once

#include <string>

#include "znGeom/files/internal/text_scanner.h"
#include "znGeom/foundation/containers/vector.h"

namespace znGeom::internal {

enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };
enum class PlyEncoding { Text, LittleEndian, BigEndian };

struct PlyProperty
{
    std::string name;
    PlyType type{};
    bool isList = false;
    PlyType countType{}; ///< of lists
    /// What a number of a vertex is: 0 to 2 position, 3 to 5 normal, 6 and 7 texture coordinates, -1 not kept.
    int slot = -1;
    bool isCorners = false;   ///< a list of the corners of a face or a strip
    bool isCornerUVs = false; ///< a list of two texture coordinates for each corner of a face
};

struct PlyElement
{
    std::string name;
    int count = 0;
    zn::vector<PlyProperty> properties;
};

struct PlyHeader
{
    PlyEncoding encoding = PlyEncoding::Text;
    zn::vector<PlyElement> elements;
};

/// Reads to the end of the line "end_header" and checks that there are vertices with x, y and z; notes what the header
/// announces that no mesh keeps.
bool readPlyHeader(LoadContext& context, TextScanner& scanner, PlyHeader& header);

} // namespace znGeom::internal
