#include "tests/support/recorder.h"

#include <algorithm>

namespace znTest {

using namespace znGeom;

LogRecorder::LogRecorder()
{
    debugChannel().setSink([this](const std::string& text) { m_lines.push_back(text); });
}

LogRecorder::~LogRecorder() { debugChannel().setSink({}); }

int LogRecorder::count(const std::string& beginning) const
{
    return static_cast<int>(std::count_if(m_lines.begin(), m_lines.end(),
                                          [&](const std::string& line) { return line.starts_with(beginning); }));
}

Change::Change(const MeshModification& modification)
    : entity(modification.getEntity()), type(modification.getType()),
      hasVertexRemap(modification.getRemap() && modification.getRemap()->vertices()),
      hasTriangleRemap(modification.getRemap() && modification.getRemap()->triangles())
{
    for (int i = 0; i < MeshModification::numChannels; ++i) {
        const auto channel = static_cast<MeshModification::Channel>(i);
        if (modification.isModified(channel)) modified.push_back(channel);
        if (modification.isValid(channel)) valid.push_back(channel);
    }
    for (const znString::CString& name : modification.modifiedAttributes()) attributes.emplace_back(name.asChar());
}

ChangeRecorder::ChangeRecorder(const PointMesh& mesh)
{
    using znRTB::FunctionArgMember;
    mesh.modifiedSignal().addCallback(
        new FunctionArgMember<EntityModification&, ChangeRecorder>(this, &ChangeRecorder::take), *this);
    mesh.destroyedSignal().addCallback(
        new FunctionArgMember<Entity*, ChangeRecorder>(this, &ChangeRecorder::takeDestroyed), *this);
}

void ChangeRecorder::take(EntityModification& modification)
{
    m_changes.emplace_back(static_cast<MeshModification&>(modification));
}

} // namespace znTest
