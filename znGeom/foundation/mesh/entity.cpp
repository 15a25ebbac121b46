#include "znGeom/foundation/mesh/entity.h"

namespace znGeom {

EntityModification::~EntityModification() = default;

Entity::~Entity() { m_destroyed.emit(this); }

void Entity::sendMessage(EntityModification& modification) const { m_modified.emit(modification); }

void Entity::resendMessage(EntityModification& modification) const { m_modified.emit(modification); }

} // namespace znGeom
