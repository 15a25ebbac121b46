#include "znGeom/files/mesh_format.h"

#include <string_view>

namespace znGeom {

namespace {

struct Extension
{
    std::string_view letters;
    MeshFormat format;
};

constexpr Extension extensions[] = {
    {"obj", MeshFormat::Obj},   {"ply", MeshFormat::Ply},    {"stl", MeshFormat::Stl},     {"off", MeshFormat::Off},
    {"txt", MeshFormat::Plain}, {"mesh", MeshFormat::Plain}, {"plain", MeshFormat::Plain}, {"xyz", MeshFormat::Points},
};

} // namespace

MeshFormat meshFormat(const znOS::Filename& file)
{
    const znString::CString name = file.basename().asMultibyte(znString::Encoding::Native);
    std::string letters(name.asChar());
    letters.erase(0, letters.rfind('.') + 1); // the whole name when there is no dot
    if (letters.size() == std::string_view(name.asChar()).size()) return MeshFormat::Unknown;
    for (char& letter : letters)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    for (const Extension& extension : extensions)
        if (letters == extension.letters) return extension.format;
    return MeshFormat::Unknown;
}

const char* meshFormatName(MeshFormat format)
{
    switch (format) {
    case MeshFormat::Obj:
        return "OBJ";
    case MeshFormat::Ply:
        return "PLY";
    case MeshFormat::Stl:
        return "STL";
    case MeshFormat::Off:
        return "OFF";
    case MeshFormat::Plain:
        return "plain";
    case MeshFormat::Points:
        return "points";
    default:
        return "unknown";
    }
}

bool hasPolygons(MeshFormat format)
{
    return format == MeshFormat::Obj || format == MeshFormat::Ply || format == MeshFormat::Off ||
           format == MeshFormat::Plain;
}

} // namespace znGeom
