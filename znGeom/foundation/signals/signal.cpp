#include "znGeom/foundation/signals/signal.h"

#include <utility>

namespace znRTB {

FunctionBase::~FunctionBase() = default;
bool FunctionBase::isGlobalFunction(void*) const { return false; }
bool FunctionBase::isInstance(void*) const { return false; }

Connection::~Connection() { leaveClient(); }

void Connection::disconnect() { remove(); }

/// Out of the client's list and, unless an emission stands here, out of the signal's list and gone.
void Connection::remove()
{
    leaveClient();
    m_removing = true;
    if (m_locks > 0) return;
    if (m_signal) m_signal->erase(this);
    delete this;
}

void Connection::unlock()
{
    --m_locks;
    if (m_removing && m_locks == 0) remove();
}

void Connection::leaveClient()
{
    if (!m_linkOfClient) return;
    *m_linkOfClient = m_nextOfClient;
    if (m_nextOfClient) m_nextOfClient->m_linkOfClient = m_linkOfClient;
    m_linkOfClient = nullptr;
}

SignalClient::~SignalClient() { disconnectAll(); }

void SignalClient::disconnectAll()
{
    while (m_first) m_first->remove();
}

SignalBase::~SignalBase()
{
    for (Emission* emission = m_emission; emission; emission = emission->m_outer) emission->m_signal = nullptr;
    for (Connection* connection = m_first; connection;) {
        Connection* next = connection->m_next;
        connection->m_signal = nullptr;
        connection->m_next = nullptr;
        connection->remove();
        connection = next;
    }
}

Connection* SignalBase::addCallback(FunctionBase* function)
{
    Connection* connection = new Connection(this, function);
    (m_last ? m_last->m_next : m_first) = connection;
    connection->m_previous = std::exchange(m_last, connection);
    return connection;
}

Connection* SignalBase::addCallback(FunctionBase* function, SignalClient& client)
{
    Connection* connection = addCallback(function);
    connection->m_linkOfClient = &client.m_first;
    connection->m_nextOfClient = client.m_first;
    if (client.m_first) client.m_first->m_linkOfClient = &connection->m_nextOfClient;
    client.m_first = connection;
    return connection;
}

bool SignalBase::isConnected() const
{
    for (const Connection* connection = m_first; connection; connection = connection->m_next)
        if (!connection->m_removing) return true;
    return false;
}

void SignalBase::erase(Connection* connection)
{
    Connection *previous = connection->m_previous, *next = connection->m_next;
    (previous ? previous->m_next : m_first) = next;
    (next ? next->m_previous : m_last) = previous;
}

SignalBase::Emission::Emission(SignalBase& signal)
    : m_signal(&signal), m_outer(signal.m_emission), m_current(signal.m_first)
{
    signal.m_emission = this;
    if (m_current) m_current->lock();
}

SignalBase::Emission::~Emission()
{
    if (m_current) m_current->unlock(); // a function threw
    if (m_signal) m_signal->m_emission = m_outer;
}

bool SignalBase::Emission::isCallable() const { return !m_current->m_blocked && !m_current->m_removing; }

void SignalBase::Emission::advance()
{
    Connection* left = m_current;
    m_current = m_signal ? left->m_next : nullptr;
    if (m_current) m_current->lock();
    left->unlock();
}

} // namespace znRTB
