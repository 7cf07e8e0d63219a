// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
//
// An agent: prints how all policies read, follows them, and keeps those that it is told to keep.
// Usage: agent-sdbus [POLICY=on|off]...
#include "bus.h" // this and the next are what sdbus-c++-xml2cpp makes
#include "policymanager.h"

#include <cstdio>
#include <iostream>
#include <map>
#include <memory>

namespace {

#if SDBUS_VERSION < 2
using ServiceName = std::string;
using Failure = const sdbus::Error *;
#else
using ServiceName = sdbus::ServiceName;
using Failure = std::optional<sdbus::Error>;
#endif

const char *const Service = "org.kvt.PolicyManager";
const char *const Path = "/org/kvt/PolicyManager";
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

/// Reads are asynchronous, so that none without an answer stops the agent.
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
        if (isThere)
            read(m_policies);
    }

private:
    void onPolicyChanged(const std::string &key, const sdbus::Variant &) override
    {
        if (const auto it = m_policies.find(key); it != m_policies.end())
            read({*it});
    }

    void read(const Words &keys)
    {
        const auto words = std::make_shared<Words>(keys);
        for (auto &entry : *words)
            getProxy()
                .callMethodAsync("KeyValue")
                .onInterface(INTERFACE_NAME)
                .withTimeout(Timeout)
                .withArguments(entry.first)
                .uponReplyInvoke([words, &entry](Failure failure, const sdbus::Variant &value) {
                    if (!failure)
                        entry.second = wordFor(value);
                });
        // Answered last: a policy that has no answer by then has no value.
        getProxy()
            .callMethodAsync("Keys")
            .onInterface(org::kvt::PolicyManager::Switch_proxy::INTERFACE_NAME)
            .withTimeout(Timeout)
            .uponReplyInvoke([this, words](Failure failure, const std::vector<std::string> &) {
                if (failure)
                    say("no answer: ", failure->getName());
                else
                    take(*words);
            });
    }

    void take(const Words &words)
    {
        for (const auto &[key, word] : words) {
            if (m_words[key] != word)
                say(key, ' ', word);
            m_words[key] = word;
            if (const auto wish = m_wishes.find(key);
                wish != m_wishes.end() && wish->second != word)
                write(key, wish->second);
        }
    }

    void write(const std::string &key, const std::string &wish)
    {
        try {
            const bool accepted = SetKeyValue(key, sdbus::Variant(wish == "on"));
            say(key, accepted ? " is set" : " is refused");
        } catch (const sdbus::Error &error) {
            if (error.getName() == "org.freedesktop.DBus.Error.AccessDenied")
                say(key, " is not allowed: ", error.getMessage());
            else // the daemon has gone, or is silent; what it holds is read when it is back
                say(key, " has no answer: ", error.getName());
        }
    }

    const Words m_policies, m_wishes;
    Words m_words; // how each policy reads
};

class Bus : public sdbus::ProxyInterfaces<org::freedesktop::DBus_proxy>
{
public:
    Bus(sdbus::IConnection &connection, Daemon &daemon)
        : ProxyInterfaces(connection, ServiceName("org.freedesktop.DBus"),
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
        if (name == Service)
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
        if (argument != key + "=on" && argument != key + "=off")
            throw std::runtime_error("usage: agent-sdbus [POLICY=on|off]...");
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
