// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
//
// An agent: prints how all policies read, follows them, and keeps those that it is told to keep.
// Usage: agent-sdbus [POLICY=on|off]...
#include "bus.h" // this and the next are what sdbus-c++-xml2cpp makes
#include "policymanager.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>

namespace {

#if SDBUS_VERSION < 2
using ServiceName = std::string;
using Failure = const sdbus::Error *;

std::string senderTo(const sdbus::IProxy &proxy)
{
    return proxy.getCurrentlyProcessedMessage()->getSender();
}
#else
using ServiceName = sdbus::ServiceName;
using Failure = std::optional<sdbus::Error>;

std::string senderTo(const sdbus::IProxy &proxy)
{
    return proxy.getCurrentlyProcessedMessage().getSender();
}
#endif

const char *const Service = "org.kvt.PolicyManager";
const char *const Path = "/org/kvt/PolicyManager";
const char *const BusService = "org.freedesktop.DBus";
constexpr std::chrono::seconds Timeout(120);

using Words = std::map<std::string, std::string>; // for policies: "on", "off" and others

template <typename... Parts> void say(const Parts &...parts)
{
    (std::cout << ... << parts) << std::endl;
}

/// The policies of the platform; the daemon does not list them.
Words listPolicies()
{
    Words policies;
    std::FILE *list = popen("govctl list --keys", "r"); // NOLINT(cert-env33-c): no input in it
    for (char key[256]; std::fscanf(list, "%255s", key) == 1;)
        policies[key] = "has no value";
    if (pclose(list) != 0)
        throw std::runtime_error("govctl does not list the policies");
    return policies;
}

std::string wordFor(const sdbus::Variant &value)
{
    if (!value.containsValueOfType<bool>())
        return "holds no boolean";
    return value.get<bool>() ? "on" : "off";
}

/// All calls are asynchronous, so that no read without an answer stops the agent.
class Daemon : public sdbus::ProxyInterfaces<org::kvt::PolicyManager::Policy_proxy>
{
public:
    Daemon(sdbus::IConnection &connection, const Words &policies, const Words &wishes)
        : ProxyInterfaces(connection, ServiceName(Service), sdbus::ObjectPath(Path))
        , m_policies(policies)
        , m_wishes(wishes)
    {
        registerProxy();
    }
    ~Daemon() { unregisterProxy(); }

    void onOwner(bool isThere)
    {
        say(isThere ? "the daemon is there" : "the daemon is away");
        m_isThere = isThere;
        m_batch.reset();
        if (isThere)
            read(m_policies);
    }

private:
    void onPolicyChanged(const std::string &key, const sdbus::Variant &) override
    {
        if (const auto it = m_policies.find(key); it != m_policies.end())
            read({*it});
    }

    template <typename Action, typename... Arguments>
    void call(const char *interface, const char *method, Action action,
              const Arguments &...arguments)
    {
        getProxy()
            .callMethodAsync(method)
            .onInterface(interface)
            .withTimeout(Timeout)
            .withArguments(arguments...)
            .uponReplyInvoke(action);
    }

    void read(const Words &keys)
    {
        m_changed.insert(keys.begin(), keys.end());
        // One batch at a time: the bus limits the calls of a client that have no answer yet.
        if (m_batch || m_changed.empty())
            return;
        const auto batch = m_batch = std::make_shared<Words>(std::exchange(m_changed, {}));
        for (auto &entry : *batch) {
            const auto keep = [=, &entry](Failure failure, const sdbus::Variant &value) {
                if (!failure)
                    entry.second = wordFor(value);
                else if (batch == m_batch) // later it is the time-out of a policy without a value
                    report("a read", *failure);
            };
            call(INTERFACE_NAME, "KeyValue", keep, entry.first);
        }
        // Answered last: a policy that has no answer by then has no value.
        const auto finish = [=](Failure failure, const std::vector<std::string> &) {
            if (failure)
                report("a read", *failure);
            else if (batch == m_batch)
                take(*batch);
        };
        call(org::kvt::PolicyManager::Switch_proxy::INTERFACE_NAME, "Keys", finish);
    }

    void take(const Words &words)
    {
        for (const auto &[key, word] : words) {
            if (m_words[key] != word)
                say(key, ' ', word);
            m_words[key] = word;
            const auto wish = m_wishes.find(key);
            if (wish != m_wishes.end() && wish->second != word)
                write(key, wish->second == "on");
        }
        m_batch.reset();
        read({});
    }

    void write(const std::string &key, bool value)
    {
        const auto tell = [=](Failure failure, bool accepted) {
            if (failure)
                report(key, *failure);
            else
                say(key, accepted ? " is set" : " is refused");
        };
        call(INTERFACE_NAME, "SetKeyValue", tell, key, sdbus::Variant(value));
    }

    void report(const std::string &what, const sdbus::Error &error)
    {
        const bool isDenied = error.getName() == "org.freedesktop.DBus.Error.AccessDenied";
        if (isDenied && m_wishes.count(what) != 0)
            return say(what, " is not allowed: ", error.getMessage());
        say(what, " has no answer: ", error.getName());
        if (m_isThere) // else all is read later; a new connection has no unanswered calls
            std::exit(1); // NOLINT(concurrency-mt-unsafe): this is the only thread
    }

    const Words m_policies, m_wishes;
    Words m_words; // how each policy reads
    std::shared_ptr<Words> m_batch; // in flight
    Words m_changed; // policies for the next batch
    bool m_isThere = false;
};

class Bus : public sdbus::ProxyInterfaces<org::freedesktop::DBus_proxy>
{
public:
    Bus(sdbus::IConnection &connection, Daemon &daemon)
        : ProxyInterfaces(connection, ServiceName(BusService),
                          sdbus::ObjectPath("/org/freedesktop/DBus"))
        , m_daemon(daemon)
    {
        registerProxy();
        m_daemon.onOwner(NameHasOwner(Service));
    }
    ~Bus() { unregisterProxy(); }

private:
    void onNameOwnerChanged(const std::string &name, const std::string &,
                            const std::string &owner) override
    {
        // Anybody can send such a signal to this connection.
        if (name == Service && senderTo(getProxy()) == BusService)
            m_daemon.onOwner(!owner.empty());
    }

    Daemon &m_daemon;
};

} // namespace

int main(int argc, char **argv)
try {
    const Words policies = listPolicies();
    Words wishes;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t end = argument.rfind('=');
        const std::string key = argument.substr(0, end);
        if (argument != key + "=on" && argument != key + "=off") {
            std::cerr << "usage: agent-sdbus [POLICY=on|off]...\n";
            return 2;
        }
        if (policies.count(key) != 0)
            wishes[key] = argument.substr(end + 1);
        else // the daemon would accept it
            say(key, " is no policy");
    }
    const auto connection = sdbus::createSystemBusConnection();
    Daemon daemon(*connection, policies, wishes);
    const Bus bus(*connection, daemon);
    connection->enterEventLoop();
} catch (const std::exception &error) {
    std::cerr << error.what() << '\n';
    return 1;
}
