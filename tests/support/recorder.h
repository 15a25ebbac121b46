/// Recorders: what was printed, and what meshes reported to their listeners.
#pragma once

#include <string>
#include <vector>

#include "znGeom/foundation/mesh.h"
#include "znGeom/foundation/output.h"
#include "znGeom/foundation/threads.h"

namespace znTest {

/// Listens to the debug channel as long as it lives; one at a time.
class LogRecorder
{
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    /// One entry per `print`, line endings included.
    const std::vector<std::string>& lines() const { return m_lines; }
    /// How many entries start with `beginning`.
    int count(const std::string& beginning) const;
    void clear() { m_lines.clear(); }

private:
    std::vector<std::string> m_lines;
};

/// One change as a listener saw it.
struct Change
{
    using Channels = std::vector<znGeom::MeshModification::Channel>;

    const znGeom::Entity* entity;
    znGeom::MeshModification::Type type;
    bool hasVertexRemap, hasTriangleRemap;
    Channels modified, valid;
    std::vector<std::string> attributes;

    explicit Change(const znGeom::MeshModification& modification);
};

/// Listens to a mesh; ends with either of the two.
class ChangeRecorder : public znRTB::SignalClient
{
public:
    explicit ChangeRecorder(const znGeom::PointMesh& mesh);

    const std::vector<Change>& changes() const { return m_changes; }
    bool meshDestroyed() const { return m_meshDestroyed; }
    void clear() { m_changes.clear(); }

private:
    void take(znGeom::EntityModification& modification);
    void takeDestroyed(znGeom::Entity*) { m_meshDestroyed = true; }

    std::vector<Change> m_changes;
    bool m_meshDestroyed = false;
};

} // namespace znTest
