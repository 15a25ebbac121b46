#include "znGeom/foundation/mesh/mesh_modification.h"

#include "znGeom/foundation/mesh/point_mesh.h"

namespace znGeom {

MeshModification::MeshModification(const PointMesh* mesh, Type type, MeshRemap* remap)
    : EntityModification(mesh), m_type(type), m_remap(remap)
{}

void MeshModification::vertexAttribsModified(const znString::CString& name)
{
    m_attributes.append(name);
    if (equal(name, PointMesh::NormalsName)) normalsModified();
    if (equal(name, PointMesh::UVsName)) uvsModified();
    if (equal(name, PointMesh::STsName)) stsModified();
}

} // namespace znGeom
