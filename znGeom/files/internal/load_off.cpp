#include "znGeom/files/internal/loaders.h"
#include "znGeom/files/internal/text_scanner.h"

namespace znGeom::internal {

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

bool readKeyword(TextScanner& scanner, OffHeader& header)
{
    std::string_view keyword;
    if (!scanner.readWord(keyword)) return false;
    const bool texture = takePrefix(keyword, "ST");
    header.furtherChannels = takePrefix(keyword, "C") || texture;
    header.normals = takePrefix(keyword, "N");
    if (keyword == "4OFF" || keyword == "nOFF" || keyword == "4nOFF")
        return scanner.fail("OFF files of more than three dimensions can't be read");
    return keyword == "OFF" || scanner.fail("this is not an OFF file, which would begin with the word OFF");
}

bool readHeader(TextScanner& scanner, OffHeader& header)
{
    if (!readKeyword(scanner, header)) return false;
    if (scanner.hasWordOnLine()) {
        TextScanner next = scanner;
        std::string_view word;
        if (next.readWord(word) && word == "BINARY") return scanner.fail("binary OFF files can't be read");
    }
    if (!scanner.read(header.numVertices) || !scanner.read(header.numFaces)) return false;
    if (header.numVertices < 0 || header.numFaces < 0) return scanner.fail("a count is negative");
    scanner.skipLine();
    return true;
}

/// Anything after the position and the normal on a line is colour or texture.
bool readVertices(const OffHeader& header, TextScanner& scanner, LoadContext& context, MeshParts& parts)
{
    bool more = header.furtherChannels;
    for (int i = 0; i < header.numVertices; ++i) {
        float position[3], normal[3];
        if (!scanner.readThree(position) || !parts.addVertex(position)) return false;
        if (header.normals && !(scanner.readThree(normal) && (parts.normals.append(normal, 3) || context.tooLarge())))
            return false;
        more = scanner.hasWordOnLine() || more;
        scanner.skipLine();
    }
    if (more) context.note("colours and texture coordinates: not kept");
    return true;
}

/// Anything after the corners is the colour of the face.
bool readFaces(const OffHeader& header, TextScanner& scanner, LoadContext& context, MeshParts& parts)
{
    zn::vector<int> corners;
    bool colours = false;
    for (int i = 0; i < header.numFaces; ++i) {
        if (!scanner.readCounted(corners) || !parts.addFace(corners.data(), corners.size())) return false;
        colours = scanner.hasWordOnLine() || colours;
        scanner.skipLine();
    }
    if (colours) context.note("colours of faces: not kept");
    return true;
}

} // namespace

bool loadOff(LoadContext& context, CompactMesh& mesh)
{
    TextScanner scanner(context);
    scanner.allowComments();
    MeshParts parts(context);
    OffHeader header;
    if (!readHeader(scanner, header) || !readVertices(header, scanner, context, parts) ||
        !readFaces(header, scanner, context, parts))
        return false;
    if (!scanner.atEnd()) return scanner.fail("the file goes on behind its last face");
    return !context.hasFailed() && parts.publish(mesh);
}

} // namespace znGeom::internal
