/// `znGeom::PointMesh`: vertices and their named channels.
#pragma once

#include <memory>

#include "znGeom/foundation/containers/tree.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/foundation/mesh/entity.h"
#include "znGeom/foundation/mesh/mesh_attributes.h"
#include "znGeom/foundation/mesh/mesh_modification.h"
#include "znGeom/foundation/mesh/mesh_records.h"

namespace znGeom {

/// Vertex positions and any number of named channels of 1 to 4 `float` per vertex. Positions always exist; normals and
/// the texture channels are null while absent. Every channel covers every vertex: resizing the vertex array resizes
/// them all, with new elements zero.
///
/// A change to the arrays is reported afterwards by one call of `modified`, which drops the channels that are no longer
/// correct and notifies the listeners. Nothing else invalidates anything. Indices are trusted. Any number of threads
/// may read a mesh that nobody changes.
class ZNGEOM_API PointMesh : public Entity
{
public:
    /// The names of the channels that have their own functions below.
    static const char* const VerticesName;
    static const char* const NormalsName;
    static const char* const UVsName;
    static const char* const STsName;
    static const char* const ColoursName;

    PointMesh();
    /// A copy of the data, without listeners and allocator.
    PointMesh(const PointMesh& other);
    /// Replaces the data; listeners and allocator stay.
    PointMesh& operator=(const PointMesh& other);
    ~PointMesh() override;

    /// Keeps the contents of all arrays, present and future, with a host's allocator; null brings them back.
    virtual void setArrayAllocator(zn::Reference<ArrayAllocator> allocator);

    /// Reports what was done to the mesh, once, after all arrays are final. `TopologyChanged` drops normals and texture
    /// channels, `GeometryChanged` drops normals, unless the flags keep them; named attributes and selections stay.
    /// Then the listeners are notified.
    virtual void modified(MeshModification& modification);

    /// The memory of the object and all its arrays.
    virtual size_t getSizeInBytes() const;

    // Positions
    int getNumVertices() const { return m_vertices->getNumElements(); }
    MeshVertex* getVertices() { return reinterpret_cast<MeshVertex*>(getVerticesRaw()); }
    const MeshVertex* getVertices() const { return reinterpret_cast<const MeshVertex*>(getVerticesRaw()); }
    float* getVerticesRaw() { return toWrite(m_vertices); }
    const float* getVerticesRaw() const { return toRead(m_vertices); }
    void resizeVertexArray(int numVertices);
    void copyVertices(int numVertices, const MeshVertex* vertices);
    /// Takes the elements of an array, three per vertex, which is empty then: nothing is copied unless the mesh has an
    /// allocator. All other channels follow the new number of vertices.
    void takeVertices(Array<float>& positions);

    // Normals
    MeshNormal* getNormals() { return reinterpret_cast<MeshNormal*>(getNormalsRaw()); }
    const MeshNormal* getNormals() const { return reinterpret_cast<const MeshNormal*>(getNormalsRaw()); }
    float* getNormalsRaw() { return toWrite(m_normals); }
    const float* getNormalsRaw() const { return toRead(m_normals); }
    /// Makes the channel, filled with zeros, unless it exists already.
    void allocNormalArray();
    void deleteNormals();
    /// Whether the normals were derived from the geometry and not supplied by a file or a user.
    bool getNormalsComputed() const { return m_normalsComputed; }
    void setNormalsComputed(bool computed) { m_normalsComputed = computed; }

    // Texture channels
    MeshUV* getUVs() { return reinterpret_cast<MeshUV*>(getUVsRaw()); }
    const MeshUV* getUVs() const { return reinterpret_cast<const MeshUV*>(getUVsRaw()); }
    float* getUVsRaw() { return toWrite(m_uvs); }
    const float* getUVsRaw() const { return toRead(m_uvs); }
    void allocUVArray();
    void deleteUVs();
    MeshUV* getSTs() { return reinterpret_cast<MeshUV*>(getSTsRaw()); }
    const MeshUV* getSTs() const { return reinterpret_cast<const MeshUV*>(getSTsRaw()); }
    float* getSTsRaw() { return toWrite(m_sts); }
    const float* getSTsRaw() const { return toRead(m_sts); }
    void allocSTArray();
    void deleteSTs();

    /// Sized by its user: resize it to the number of vertices first.
    BitVector& getSelectedVertices() { return m_selectedVertices; }
    const BitVector& getSelectedVertices() const { return m_selectedVertices; }

    // Named attributes, positions and the channels above among them
    /// Makes an attribute of zeros, or returns the one of that name if it has that many components; one with another
    /// number is replaced. Null for a number of components outside 1 to 4, for an empty name, and for a wrong number of
    /// components for a channel that has its own functions.
    MeshAttributes* allocAttributes(const znString::CString& name, int numComponents);
    /// Null for an unknown name; creates nothing.
    MeshAttributes* getAttributes(const znString::CString& name);
    const MeshAttributes* getAttributes(const znString::CString& name) const;
    /// Positions come first, the rest in order of creation; null past the last.
    MeshAttributes* getAttributes(int index);
    const MeshAttributes* getAttributes(int index) const;
    int getNumAttributes() const { return m_attributes.size(); }
    void getAttributeNames(zn::set<znString::CString>& names) const;
    /// Positions cannot be deleted.
    void deleteAttributes(const znString::CString& name);

protected:
    /// Exchanges data, but not listeners and allocators.
    void swapData(PointMesh& other);
    const zn::Reference<ArrayAllocator>& arrayAllocator() const { return m_allocator; }

private:
    static float* toWrite(MeshAttributes* channel) { return channel ? channel->asFloat() : nullptr; }
    static const float* toRead(const MeshAttributes* channel) { return channel ? channel->asFloat() : nullptr; }
    MeshAttributes* allocChannel(const char* name, int numComponents);
    int findAttributes(const znString::CString& name) const;
    void findChannels();

    zn::vector<std::unique_ptr<MeshAttributes>> m_attributes;
    MeshAttributes* m_vertices = nullptr;
    MeshAttributes* m_normals = nullptr;
    MeshAttributes* m_uvs = nullptr;
    MeshAttributes* m_sts = nullptr;
    bool m_normalsComputed = false;
    BitVector m_selectedVertices;
    zn::Reference<ArrayAllocator> m_allocator;
};

} // namespace znGeom
