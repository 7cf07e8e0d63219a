// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "sdbus.h"

#include <future>
#include <iostream>
#include <sstream>

namespace {

#if SDBUS_VERSION < 2
const std::string Service("org.kvt.PolicyManager");
#else
const sdbus::ServiceName Service("org.kvt.PolicyManager");
#endif
const sdbus::ObjectPath Path("/org/kvt/PolicyManager");

using org::kvt::PolicyManager::Policy_proxy;
using org::kvt::PolicyManager::Switch_proxy;

class Daemon : public sdbus::ProxyInterfaces<Policy_proxy, Switch_proxy>
{
public:
    explicit Daemon(sdbus::IConnection &connection)
        : ProxyInterfaces(connection, Service, Path)
    {
        registerProxy();
    }
    ~Daemon() { unregisterProxy(); }

    /// Waits until a switch has changed; returns the signals up to that.
    std::string waitForSwitch() { return m_allSignals.get_future().get(); }

private:
    void onPolicyChanged(const std::string &key, const sdbus::Variant &value) override
    {
        m_signals << "PolicyChanged " << key << ' ' << value.get<bool>() << '\n';
    }

    void onSwitchChanged(const std::string &key, const sdbus::Variant &value) override
    {
        m_signals << "SwitchChanged " << key << ' ' << value.get<bool>() << '\n';
        m_allSignals.set_value(m_signals.str());
    }

    std::ostringstream m_signals;
    std::promise<std::string> m_allSignals;
};

} // namespace

/// Calls each method of the daemon once, and prints the results, then the signals.
int main()
{
    const auto connection = sdbus::createSystemBusConnection();
    connection->enterEventLoopAsync();
    Daemon daemon(*connection);
    const sdbus::Variant off(false);

    std::cout << daemon.Policy_proxy::KeyValue("CameraEnabled").get<bool>() << '\n';
    std::cout << daemon.Policy_proxy::SetKeyValue("NfcEnabled", off) << '\n';
    const std::string key = daemon.Keys().front();
    std::cout << key << '\n';
    for (const int type : daemon.KeyPolicyTypes(key))
        std::cout << type << '\n';
    std::cout << daemon.Switch_proxy::KeyValue(key).get<bool>() << '\n';
    std::cout << daemon.Switch_proxy::SetKeyValue(key, off) << '\n';
    std::cout << daemon.waitForSwitch();
}
