#include "apps/zngeom/mesh_readers.h"
#include "apps/zngeom/pacer.h"
#include "apps/zngeom/read_file.h"
#include "apps/zngeom/text_scanner.h"

namespace tool {

namespace {

struct OffHeader
{
    bool normals = false;
    bool furtherChannels = false; ///< colours or texture coordinates
    int numVertices = 0, numFaces = 0;
};

/// Takes a letter or two from the front of the keyword.
bool takePrefix(std::string_view& keyword, std::string_view prefix)
{
    if (!keyword.starts_with(prefix)) return false;
    keyword.remove_prefix(prefix.size());
    return true;
}

OffHeader readHeader(TextScanner& scanner)
{
    OffHeader header;
    std::string_view keyword = scanner.word();
    const bool texture = takePrefix(keyword, "ST");
    header.furtherChannels = takePrefix(keyword, "C") || texture;
    header.normals = takePrefix(keyword, "N");
    if (keyword == "4OFF" || keyword == "nOFF" || keyword == "4nOFF")
        scanner.fail("OFF files of more than three dimensions can't be read");
    if (keyword != "OFF") scanner.fail("this is not an OFF file, which would begin with the word OFF");
    if (scanner.hasWordOnLine()) {
        TextScanner next = scanner;
        if (next.word() == "BINARY") scanner.fail("binary OFF files can't be read");
    }
    header.numVertices = scanner.integer();
    header.numFaces = scanner.integer();
    if (header.numVertices < 0 || header.numFaces < 0) scanner.fail("a count is negative");
    scanner.skipLine();
    return header;
}

/// What stands behind the position and the normal on a line is colour or texture.
void readVertices(const OffHeader& header, TextScanner& scanner, Pacer& pacer, MeshParts& parts)
{
    bool more = header.furtherChannels;
    for (int vertex = 0; vertex < header.numVertices; ++vertex) {
        for (int axis = 0; axis < 3; ++axis) parts.positions.push_back(scanner.number<float>());
        for (int axis = 0; header.normals && axis < 3; ++axis) parts.normals.push_back(scanner.number<float>());
        more = scanner.hasWordOnLine() || more;
        scanner.skipLine();
        pacer.at(scanner.position());
    }
    if (more) parts.lost.push_back("colours and texture coordinates: not kept");
}

/// What stands behind the corners is the colour of the face.
void readFaces(const OffHeader& header, TextScanner& scanner, Pacer& pacer, MeshParts& parts)
{
    std::vector<int> corners;
    for (int face = 0; face < header.numFaces; ++face) {
        const int numCorners = scanner.integer();
        if (numCorners < 1) scanner.fail("a face has " + std::to_string(numCorners) + " corners");
        corners.clear();
        for (int corner = 0; corner < numCorners; ++corner) corners.push_back(scanner.integer());
        parts.addFace(corners.data(), corners.size());
        scanner.skipLine();
        pacer.at(scanner.position());
    }
}

} // namespace

void readOff(const std::string& path, znUtil::Progress& progress, LoadedMesh& result)
{
    const std::string text = readFile(path, progress);
    TextScanner scanner(text);
    scanner.allowComments();
    Pacer pacer(progress, text.size());
    MeshParts parts;
    const OffHeader header = readHeader(scanner);
    readVertices(header, scanner, pacer, parts);
    readFaces(header, scanner, pacer, parts);
    if (!scanner.atEnd()) scanner.fail("the file goes on behind its last face");
    buildMesh(parts, 0, result);
}

} // namespace tool
