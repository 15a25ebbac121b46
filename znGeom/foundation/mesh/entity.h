/// `znGeom::Entity`: an object that changes and notifies its listeners.
#pragma once

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/signals/signal.h"

namespace znGeom {

class Entity;

/// One change of an entity.
class ZNGEOM_API EntityModification
{
public:
    explicit EntityModification(const Entity* entity) : m_entity(entity) {}
    virtual ~EntityModification();
    EntityModification(const EntityModification&) = default;
    EntityModification& operator=(const EntityModification&) = default;

    /// The entity that changed.
    const Entity* getEntity() const { return m_entity; }

private:
    const Entity* m_entity;
};

/// Base of both mesh forms. Listeners belong to the object and not to its contents: a copy has none, and assignment
/// leaves them where they are.
class ZNGEOM_API Entity : public zn::ReferenceCount
{
public:
    Entity() = default;
    Entity(const Entity& other) : zn::ReferenceCount(other) {}
    Entity& operator=(const Entity&) { return *this; }
    ~Entity() override;

    /// Notifies the listeners of a change to this entity.
    virtual void sendMessage(EntityModification& modification) const;
    /// Passes on a change that was announced before: to listeners added since, or on behalf of a part.
    virtual void resendMessage(EntityModification& modification) const;

    /// Sent when the entity is about to die; its contents are already gone.
    znRTB::SignalArg<Entity*>& destroyedSignal() const { return m_destroyed; }
    /// Sent for every change.
    znRTB::SignalArg<EntityModification&>& modifiedSignal() const { return m_modified; }

private:
    mutable znRTB::SignalArg<Entity*> m_destroyed;
    mutable znRTB::SignalArg<EntityModification&> m_modified;
};

} // namespace znGeom
