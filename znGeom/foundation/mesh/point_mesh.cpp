#include "znGeom/foundation/mesh/point_mesh.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "znGeom/foundation/containers/checked_size.h"

namespace znGeom {

const char* const PointMesh::VerticesName = "vertices";
const char* const PointMesh::NormalsName = "normals";
const char* const PointMesh::UVsName = "uvs";
const char* const PointMesh::STsName = "sts";
const char* const PointMesh::ColoursName = "colours";

namespace {

/// How many components a channel that has its own functions must have; 0 for any other name.
int fixedComponents(const znString::CString& name)
{
    if (equal(name, PointMesh::VerticesName) || equal(name, PointMesh::NormalsName)) return 3;
    if (equal(name, PointMesh::UVsName) || equal(name, PointMesh::STsName)) return 2;
    if (equal(name, PointMesh::ColoursName)) return 4;
    return 0;
}

} // namespace

PointMesh::PointMesh() { m_vertices = allocChannel(VerticesName, 3); }

PointMesh::PointMesh(const PointMesh& other) : Entity(other) { *this = other; }

PointMesh& PointMesh::operator=(const PointMesh& other)
{
    if (this == &other) return *this;
    zn::vector<std::unique_ptr<MeshAttributes>> copies;
    for (const auto& source : other.m_attributes) {
        copies.append(std::make_unique<MeshAttributes>(*source));
        copies.back()->setAllocator(m_allocator);
    }
    m_attributes.swap(copies);
    m_normalsComputed = other.m_normalsComputed;
    m_selectedVertices = other.m_selectedVertices;
    findChannels();
    return *this;
}

PointMesh::~PointMesh() = default;

void PointMesh::setArrayAllocator(zn::Reference<ArrayAllocator> allocator)
{
    m_allocator = std::move(allocator);
    for (const auto& attribute : m_attributes) attribute->setAllocator(m_allocator);
}

void PointMesh::modified(MeshModification& modification)
{
    const bool topology = modification.getType() == MeshModification::TopologyChanged;
    const bool geometry = modification.getType() == MeshModification::GeometryChanged;
    if ((topology || geometry) && !modification.keeps(MeshModification::Normals)) deleteNormals();
    if (topology && !modification.keeps(MeshModification::UVs)) deleteUVs();
    if (topology && !modification.keeps(MeshModification::STs)) deleteSTs();
    sendMessage(modification);
}

size_t PointMesh::getSizeInBytes() const
{
    size_t bytes = sizeof(*this) + static_cast<size_t>(m_selectedVertices.getNumWords()) * sizeof(std::uint32_t);
    for (const auto& attribute : m_attributes) bytes += attribute->getSizeInBytes();
    return bytes;
}

void PointMesh::resizeVertexArray(int numVertices)
{
    for (const auto& attribute : m_attributes) // before any of them changes
        zn::checkedSize(std::int64_t{numVertices} * attribute->getNumComponents());
    for (const auto& attribute : m_attributes) attribute->resize(numVertices);
}

void PointMesh::copyVertices(int numVertices, const MeshVertex* vertices)
{
    resizeVertexArray(numVertices);
    std::copy_n(vertices, numVertices, getVertices());
}

void PointMesh::takeVertices(Array<float>& positions)
{
    const int numVertices = positions.size() / 3;
    for (const auto& attribute : m_attributes) // before any of them changes
        zn::checkedSize(std::int64_t{numVertices} * attribute->getNumComponents());
    m_vertices->swapValues(positions);
    for (const auto& attribute : m_attributes)
        if (attribute.get() != m_vertices) attribute->resize(numVertices);
    positions.resize(0);
}

void PointMesh::allocNormalArray() { allocChannel(NormalsName, 3); }

void PointMesh::deleteNormals() { deleteAttributes(NormalsName); }

void PointMesh::allocUVArray() { allocChannel(UVsName, 2); }
void PointMesh::deleteUVs() { deleteAttributes(UVsName); }
void PointMesh::allocSTArray() { allocChannel(STsName, 2); }
void PointMesh::deleteSTs() { deleteAttributes(STsName); }

MeshAttributes* PointMesh::allocAttributes(const znString::CString& name, int numComponents)
{
    if (name.isEmpty() || numComponents < 1 || numComponents > 4) return nullptr;
    const int required = fixedComponents(name);
    if (required != 0 && required != numComponents) return nullptr;
    if (MeshAttributes* present = getAttributes(name)) {
        if (present->getNumComponents() == numComponents) return present;
        deleteAttributes(name);
    }
    return allocChannel(name.asChar(), numComponents);
}

MeshAttributes* PointMesh::allocChannel(const char* name, int numComponents)
{
    if (MeshAttributes* present = getAttributes(name)) return present;
    const int numVertices = m_vertices ? getNumVertices() : 0;
    m_attributes.append(std::make_unique<MeshAttributes>(name, numComponents, numVertices, m_allocator));
    findChannels();
    return m_attributes.back().get();
}

int PointMesh::findAttributes(const znString::CString& name) const
{
    for (int i = 0; i < m_attributes.size(); ++i)
        if (equal(m_attributes[i]->getName(), name)) return i;
    return -1;
}

MeshAttributes* PointMesh::getAttributes(const znString::CString& name) { return getAttributes(findAttributes(name)); }

const MeshAttributes* PointMesh::getAttributes(const znString::CString& name) const
{
    return getAttributes(findAttributes(name));
}

MeshAttributes* PointMesh::getAttributes(int index)
{
    return index >= 0 && index < m_attributes.size() ? m_attributes[index].get() : nullptr;
}

const MeshAttributes* PointMesh::getAttributes(int index) const
{
    return index >= 0 && index < m_attributes.size() ? m_attributes[index].get() : nullptr;
}

void PointMesh::getAttributeNames(zn::set<znString::CString>& names) const
{
    names.clear();
    for (const auto& attribute : m_attributes) names.insert(attribute->getName());
}

void PointMesh::deleteAttributes(const znString::CString& name)
{
    const int index = findAttributes(name);
    if (index < 0 || m_attributes[index].get() == m_vertices) return;
    if (m_attributes[index].get() == m_normals) m_normalsComputed = false;
    m_attributes.erase(m_attributes.begin() + index);
    findChannels();
}

void PointMesh::findChannels()
{
    m_vertices = getAttributes(VerticesName);
    m_normals = getAttributes(NormalsName);
    m_uvs = getAttributes(UVsName);
    m_sts = getAttributes(STsName);
}

void PointMesh::swapData(PointMesh& other)
{
    m_attributes.swap(other.m_attributes);
    std::swap(m_normalsComputed, other.m_normalsComputed);
    m_selectedVertices.swap(other.m_selectedVertices);
    findChannels();
    other.findChannels();
    if (m_allocator == other.m_allocator) return;
    for (const auto& attribute : m_attributes) attribute->setAllocator(m_allocator);
    for (const auto& attribute : other.m_attributes) attribute->setAllocator(other.m_allocator);
}

} // namespace znGeom
