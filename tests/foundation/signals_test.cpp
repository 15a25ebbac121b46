#include "znGeom/foundation/signals.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "tests/support/random.h"

namespace {

using namespace znRTB;

/// Any callable as a function of a signal; counts itself.
struct Callback : FunctionArg<int>
{
    explicit Callback(std::function<void()> function) : call(std::move(function)) { ++alive; }
    ~Callback() override { --alive; }
    void operator()(int) override { call(); }
    std::function<void()> call;
    static inline int alive = 0;
};

struct Signals : testing::Test
{
    using Names = std::vector<int>;
    ~Signals() override
    {
        signal.reset();
        EXPECT_EQ(Callback::alive, 0);
    }
    /// A callback that notes its name and then does something.
    Callback* note(int name, std::function<void()> then = nullptr)
    {
        return new Callback([this, name, then] {
            called.push_back(name);
            if (then) then();
        });
    }
    Connection* add(int name, std::function<void()> then = nullptr) { return signal->addCallback(note(name, then)); }
    Names emitted()
    {
        called.clear();
        signal->emit(0);
        return called;
    }
    std::unique_ptr<SignalArg<int>> signal = std::make_unique<SignalArg<int>>();
    Names called;
};

TEST_F(Signals, DisconnectAnybodyDuringEmission)
{
    for (int victim = 0; victim < 4; ++victim) {
        signal = std::make_unique<SignalArg<int>>();
        Connection* connections[4] = {};
        for (int name = 0; name < 4; ++name)
            connections[name] = add(name, [&, name] {
                if (name == 2 && connections[victim]) connections[victim]->disconnect(), connections[victim] = nullptr;
            });
        EXPECT_EQ(emitted(), victim == 3 ? Names({0, 1, 2}) : Names({0, 1, 2, 3}));
        Names left{0, 1, 2, 3};
        std::erase(left, victim);
        EXPECT_EQ(Callback::alive, 3);
        EXPECT_EQ(emitted(), left);
    }
    signal = std::make_unique<SignalArg<int>>();
    Connection* only = add(0, [&] {
        only->disconnect();
        only->disconnect();
        EXPECT_FALSE(signal->isConnected());
        EXPECT_EQ(Callback::alive, 1); // it is still running
        add(1);
    });
    EXPECT_EQ(emitted(), (Names{0, 1})); // what is added meanwhile is called too
    EXPECT_EQ(emitted(), (Names{1}));
}

TEST_F(Signals, DieWithinTheirOwnEmission)
{
    for (const bool nested : {false, true}) {
        signal = std::make_unique<SignalArg<int>>();
        int round = 0;
        add(0);
        add(1, [&] {
            if (nested && round++ == 0)
                signal->emit(0);
            else
                signal.reset();
        });
        add(2);
        called.clear();
        signal->emit(0);
        EXPECT_EQ(called, nested ? Names({0, 1, 0, 1}) : Names({0, 1}));
        EXPECT_EQ(Callback::alive, 0);
    }
}

TEST_F(Signals, EndAConnectionAtTheSameCostWhereverItStands)
{
    constexpr int count = 400'000;
    SignalArg<int> many;
    SignalClient client;
    std::vector<Connection*> connections;
    for (int i = 0; i < count; ++i) {
        connections.push_back(many.addCallback([](int) {}));
        many.addCallback([](int) {}, client);
    }
    for (; !connections.empty(); connections.pop_back()) connections.back()->disconnect(); // the last first
    EXPECT_TRUE(many.isConnected());
    client.disconnectAll();
    EXPECT_FALSE(many.isConnected());
}

TEST_F(Signals, LeaveNoLockBehindAnException)
{
    Connection* thrower = add(0, [] { throw std::runtime_error("from a listener"); });
    add(1);
    for (int round = 0; round < 2; ++round) EXPECT_THROW(signal->emit(0), std::runtime_error);
    thrower->disconnect();
    EXPECT_EQ(Callback::alive, 1);
    EXPECT_EQ(emitted(), (Names{1}));
}

TEST(SignalArg, LambdasAreHeldAsLongAsTheirConnection)
{
    SignalArg<const int&> signal;
    auto sum = std::make_shared<int>(0);
    Connection* connection = signal.addCallback([sum](int number) { *sum += number; });
    {
        SignalClient client;
        signal.addCallback([sum](const int& number) { *sum += 10 * number; }, client);
        signal.emit(1);
        EXPECT_EQ(*sum, 11);
        EXPECT_EQ(sum.use_count(), 3);
    }
    signal.emit(2);
    EXPECT_EQ(*sum, 13);
    connection->disconnect();
    EXPECT_EQ(sum.use_count(), 1);
}

struct Listener : SignalClient
{
    void answer(int question, bool& result) { result = result || question == 42; }
};
void answerGlobally(int question, bool& result) { result = result || question == 7; }

TEST(Signal2Args, LetsListenersAnswer)
{
    Signal2Args<int, bool&> signal;
    Listener listener, stranger;
    auto* member = new Function2ArgsMember<int, bool&, Listener>(&listener, &Listener::answer);
    auto* global = new Function2ArgsGlobal<int, bool&>(answerGlobally);
    signal.addCallback(member, listener);
    EXPECT_EQ(&signal.addCallback(global)->function(), global);
    for (const int question : {42, 7, 1}) {
        bool result = false;
        signal.emit(question, result);
        EXPECT_EQ(result, question != 1);
    }
    Connection* lambda = signal.addCallback([](int question, bool& result) { result = result || question == 1; });
    bool result = false;
    signal.emit(1, result);
    EXPECT_TRUE(result);
    lambda->disconnect();
    void* const function = reinterpret_cast<void*>(answerGlobally);
    EXPECT_TRUE(member->isInstance(&listener) && global->isGlobalFunction(function));
    EXPECT_FALSE(member->isInstance(&stranger) || member->isGlobalFunction(function) || global->isInstance(&listener) ||
                 global->isGlobalFunction(nullptr));
}

TEST_F(Signals, FollowAModelThroughRandomOperations)
{
    // Two signals and three clients that come and go; the model keeps who is connected to which signal, in order.
    znTest::Random random(1);
    struct Entry
    {
        int name, client;
        Connection* connection;
    };
    std::vector<Entry> model[2];
    std::unique_ptr<SignalArg<int>> signals[2];
    std::unique_ptr<SignalClient> clients[3];
    int s = 0, c = 0;
    const auto connect = [&](int name) {
        if (random.oneIn(3))
            model[s].push_back({name, -1, signals[s]->addCallback(note(name))});
        else
            model[s].push_back({name, c, signals[s]->addCallback(note(name), *clients[c])});
    };
    const auto disconnect = [&] {
        if (model[s].empty()) return;
        const auto any = model[s].begin() + random.below(int(model[s].size()));
        any->connection->disconnect();
        model[s].erase(any);
    };
    const auto endSignal = [&] { signals[s] = std::make_unique<SignalArg<int>>(), model[s].clear(); };
    const auto endClient = [&] {
        clients[c] = std::make_unique<SignalClient>();
        for (auto& entries : model) std::erase_if(entries, [&](const Entry& e) { return e.client == c; });
    };
    for (s = 0; s < 2; ++s) endSignal();
    for (c = 0; c < 3; ++c) endClient();
    for (int step = 0; step < 20000; ++step) {
        s = random.below(2), c = random.below(3);
        random.oneIn(30)   ? endSignal()
        : random.oneIn(20) ? endClient()
        : random.oneIn(3)  ? disconnect()
                           : connect(step);
        called.clear();
        signals[s]->emit(0);
        ASSERT_TRUE(std::equal(called.begin(), called.end(), model[s].begin(), model[s].end(),
                               [](int name, const Entry& e) { return name == e.name; }));
        ASSERT_EQ(signals[s]->isConnected(), !model[s].empty());
        ASSERT_EQ(Callback::alive, int(model[0].size() + model[1].size()));
    }
}

} // namespace
