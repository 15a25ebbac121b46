/// `znRTB`: signals, the functions they call, and listeners that disconnect themselves.
///
/// A signal owns the functions that were added to it and calls them in the order of adding. A listener that derives
/// from `SignalClient` ends its connections when it dies; a signal that dies ends them from its side. Signals and
/// clients belong to one thread at a time.
#pragma once

#include <concepts>
#include <memory>
#include <utility>

#include "znGeom/foundation/machine/export.h"

namespace znRTB {

class SignalBase;
class SignalClient;

/// A function object that a signal can hold.
class ZNGEOM_API FunctionBase
{
public:
    virtual ~FunctionBase();
    /// Whether it calls the free function at this address.
    virtual bool isGlobalFunction(void* function) const;
    /// Whether it calls a member of this object.
    virtual bool isInstance(void* instance) const;
};

/// A function of one argument.
template <typename A>
class FunctionArg : public FunctionBase
{
public:
    virtual void operator()(A argument) = 0;
};

/// A function of two arguments.
template <typename A, typename B>
class Function2Args : public FunctionBase
{
public:
    virtual void operator()(A first, B second) = 0;
};

/// Calls a member function of an object, which must live as long as the connection.
template <typename A, typename C>
class FunctionArgMember : public FunctionArg<A>
{
public:
    using Member = void (C::*)(A);
    FunctionArgMember(C* instance, Member member) : m_instance(instance), m_member(member) {}
    bool isInstance(void* instance) const override { return instance == m_instance; }
    void operator()(A argument) override { (m_instance->*m_member)(static_cast<A>(argument)); }

private:
    C* m_instance;
    Member m_member;
};

/// Calls a member function of two arguments.
template <typename A, typename B, typename C>
class Function2ArgsMember : public Function2Args<A, B>
{
public:
    using Member = void (C::*)(A, B);
    Function2ArgsMember(C* instance, Member member) : m_instance(instance), m_member(member) {}
    bool isInstance(void* instance) const override { return instance == m_instance; }
    void operator()(A first, B second) override
    {
        (m_instance->*m_member)(static_cast<A>(first), static_cast<B>(second));
    }

private:
    C* m_instance;
    Member m_member;
};

/// Calls a free function of two arguments.
template <typename A, typename B>
class Function2ArgsGlobal : public Function2Args<A, B>
{
public:
    using Function = void (*)(A, B);
    explicit Function2ArgsGlobal(Function function) : m_function(function) {}
    bool isGlobalFunction(void* function) const override { return function == reinterpret_cast<void*>(m_function); }
    void operator()(A first, B second) override { m_function(static_cast<A>(first), static_cast<B>(second)); }

private:
    Function m_function;
};

/// Calls a lambda, or whatever else takes the arguments; holds it by value.
template <typename Base, typename Call, typename... Arguments>
class FunctionCall : public Base
{
public:
    explicit FunctionCall(Call call) : m_call(std::move(call)) {}
    void operator()(Arguments... arguments) override { m_call(static_cast<Arguments>(arguments)...); }

private:
    Call m_call;
};

/// One function on one signal, owned by the signal. A pointer to it is good until `disconnect`, or until the signal or
/// the client dies.
class ZNGEOM_API Connection
{
public:
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Ends the connection for good; from within the function as well. The function object is destroyed as soon as it
    /// is not running any more.
    void disconnect();

    /// A blocked function is passed over until it is unblocked.
    void block() { m_blocked = true; }
    void unblock() { m_blocked = false; }
    bool isBlocked() const { return m_blocked; }

    FunctionBase& function() const { return *m_function; }

private:
    friend class SignalBase;
    friend class SignalClient;

    Connection(SignalBase* signal, FunctionBase* function) : m_signal(signal), m_function(function) {}

    void lock() { ++m_locks; }
    void unlock();
    void leaveClient();
    void remove();

    SignalBase* m_signal; ///< null once the signal is gone
    std::unique_ptr<FunctionBase> m_function;
    Connection* m_next = nullptr; ///< in the signal's list
    Connection* m_previous = nullptr;
    Connection* m_nextOfClient = nullptr;  ///< in the client's list
    Connection** m_linkOfClient = nullptr; ///< what points here in that list; null when no client ends this connection
    int m_locks = 0;                       ///< emissions that stand at this item
    bool m_blocked = false;
    bool m_removing = false;
};

/// Base of a listener: its connections end with it. A copy of a listener has none. Whichever side ends a connection, it
/// costs the same however many there are.
class ZNGEOM_API SignalClient
{
public:
    SignalClient() = default;
    SignalClient(const SignalClient&) {}
    SignalClient& operator=(const SignalClient&) { return *this; }
    virtual ~SignalClient();

    void disconnectAll();

private:
    friend class Connection;
    friend class SignalBase;
    Connection* m_first = nullptr;
};

/// The list of connections.
class ZNGEOM_API SignalBase
{
public:
    SignalBase() = default;
    SignalBase(const SignalBase&) = delete;
    SignalBase& operator=(const SignalBase&) = delete;
    virtual ~SignalBase();

    /// Adds a function at the end of the list and takes it over. Its type must be the one that the signal calls; the
    /// typed signals below check that.
    Connection* addCallback(FunctionBase* function);

    bool isConnected() const;

protected:
    /// The same; the connection ends with the client.
    Connection* addCallback(FunctionBase* function, SignalClient& client);

    /// Calls `call(function)` for each connection in list order. Functions may connect, disconnect (themselves or
    /// others), block, and destroy the signal; what is added meanwhile is called too.
    template <typename Call>
    void emitEach(const Call& call)
    {
        for (Emission emission(*this); emission.current(); emission.advance())
            if (emission.isCallable()) call(emission.current()->function());
    }

private:
    friend class Connection;

    /// A walk along the list that survives the end of any item and of the signal itself.
    class ZNGEOM_API Emission
    {
    public:
        explicit Emission(SignalBase& signal);
        ~Emission();
        Connection* current() const { return m_current; }
        bool isCallable() const;
        void advance();

    private:
        friend class SignalBase;
        SignalBase* m_signal; ///< null once the signal is gone
        Emission* m_outer;    ///< the emission of the same signal within which this one runs
        Connection* m_current;
    };

    void erase(Connection* connection);

    Connection* m_first = nullptr;
    Connection* m_last = nullptr;
    Emission* m_emission = nullptr; ///< the innermost one that runs
};

/// A signal of one argument.
template <typename A>
class SignalArg : public SignalBase
{
public:
    Connection* addCallback(FunctionArg<A>* function) { return SignalBase::addCallback(function); }
    Connection* addCallback(FunctionArg<A>* function, SignalClient& client)
    {
        return SignalBase::addCallback(function, client);
    }

    /// Calls a lambda, which is copied. What it refers to must live as long as the connection.
    template <std::invocable<A> Call>
    Connection* addCallback(Call call)
    {
        return SignalBase::addCallback(new FunctionCall<FunctionArg<A>, Call, A>(std::move(call)));
    }
    /// The same; the connection ends with the client.
    template <std::invocable<A> Call>
    Connection* addCallback(Call call, SignalClient& client)
    {
        return SignalBase::addCallback(new FunctionCall<FunctionArg<A>, Call, A>(std::move(call)), client);
    }

    void emit(A argument)
    {
        emitEach([&argument](FunctionBase& f) { static_cast<FunctionArg<A>&>(f)(static_cast<A>(argument)); });
    }
};

/// A signal of two arguments; a `bool&` among them lets the functions answer.
template <typename A, typename B>
class Signal2Args : public SignalBase
{
public:
    Connection* addCallback(Function2Args<A, B>* function) { return SignalBase::addCallback(function); }
    Connection* addCallback(Function2Args<A, B>* function, SignalClient& client)
    {
        return SignalBase::addCallback(function, client);
    }

    /// Calls a lambda, as above.
    template <std::invocable<A, B> Call>
    Connection* addCallback(Call call)
    {
        return SignalBase::addCallback(new FunctionCall<Function2Args<A, B>, Call, A, B>(std::move(call)));
    }
    template <std::invocable<A, B> Call>
    Connection* addCallback(Call call, SignalClient& client)
    {
        return SignalBase::addCallback(new FunctionCall<Function2Args<A, B>, Call, A, B>(std::move(call)), client);
    }

    void emit(A first, B second)
    {
        emitEach([&first, &second](FunctionBase& f) {
            static_cast<Function2Args<A, B>&>(f)(static_cast<A>(first), static_cast<B>(second));
        });
    }
};

} // namespace znRTB
