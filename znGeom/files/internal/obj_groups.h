/// `znGeom::internal::ObjGroups`: the groups and objects of an OBJ file.
#pragma once

#include <string>
#include <string_view>

#include "znGeom/files/internal/face_list.h"
#include "znGeom/files/mesh_format.h"
#include "znGeom/foundation/containers/tree.h"

namespace znGeom::internal {

class ObjGroups
{
public:
    /// From this face on, faces belong to the group of this name; to none where the name is empty.
    void begin(std::string_view name, int firstFace);
    /// Per triangle of the faces' fans. Nothing when there are no groups.
    void publish(const FaceList& faces, MeshGroups& result) const;

private:
    /// Consecutive faces.
    struct Stretch
    {
        int firstFace, group;
    };

    int numberOf(std::string_view name);

    zn::vector<std::string> m_names;
    zn::map<std::string, int> m_numbers;
    zn::vector<Stretch> m_stretches;
};

} // namespace znGeom::internal
