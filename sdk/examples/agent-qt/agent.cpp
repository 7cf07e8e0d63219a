// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
//
// An agent: prints how all policies read, follows them, and keeps those that it is told to keep.
// Usage: agent-qt [POLICY=on|off]...
#include "policymanager.h" // which qdbusxml2cpp makes

#include <QCoreApplication>
#include <QDBusServiceWatcher>
#include <QProcess>
#include <QSet>

namespace {

const QLatin1String Service("org.kvt.PolicyManager");
const QLatin1String Path("/org/kvt/PolicyManager");
const int Timeout = 120000; // milliseconds

using Reads = QMap<QString, QDBusPendingReply<QDBusVariant>>;

void say(const QString &text)
{
    QTextStream(stdout) << text << '\n';
}

int end(int code, const char *reason)
{
    QTextStream(stderr) << reason << '\n';
    return code;
}

/// The policies of the platform; the daemon does not list them.
QStringList listPolicies()
{
    QProcess client;
    client.start("govctl", {"list", "--keys"});
    if (!client.waitForFinished() || client.exitCode() != 0)
        return {};
    return QString::fromUtf8(client.readAll()).split('\n', Qt::SkipEmptyParts);
}

QString wordFor(const QDBusPendingReply<QDBusVariant> &read)
{
    if (!read.isFinished())
        return "has no value";
    const QVariant value = read.value().variant();
    if (value.userType() != QMetaType::Bool)
        return "holds no boolean";
    return value.toBool() ? "on" : "off";
}

template <typename Reply, typename Action> void whenAnswered(const Reply &reply, Action action)
{
    auto *watcher = new QDBusPendingCallWatcher(reply);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [=] {
        action(reply);
        watcher->deleteLater();
    });
}

/// All calls are asynchronous, so that no read without an answer stops the agent.
class Agent : public QObject
{
public:
    Agent(const QStringList &policies, const QMap<QString, QString> &wishes)
        : m_wishes(wishes)
    {
        m_policies.setTimeout(Timeout);
        m_switches.setTimeout(Timeout);
        connect(&m_policies, &org::kvt::PolicyManager::Policy::PolicyChanged, this,
                [=](const QString &key) {
                    if (policies.contains(key))
                        read({key});
                });
        const auto onOwner = [=](const QString &, const QString &, const QString &owner) {
            say(owner.isEmpty() ? "the daemon is away" : "the daemon is there");
            m_owner = owner;
            if (!owner.isEmpty())
                read(policies);
        };
        connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, onOwner);
        m_bus.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local",
                      "Disconnected", qApp, SLOT(quit())); // Qt does not connect again
        onOwner({}, {}, m_bus.interface()->serviceOwner(Service));
    }

private:
    void read(const QStringList &keys)
    {
        m_changed.unite({keys.begin(), keys.end()});
        // One batch at a time: the bus limits the calls of a client that have no answer yet.
        if (!m_batch.isEmpty() || m_changed.isEmpty())
            return;
        const QSet<QString> changed = std::exchange(m_changed, {});
        for (const QString &key : changed)
            m_batch.insert(key, m_policies.KeyValue(key));
        // Answered last: a policy that has no answer by then has no value.
        whenAnswered(m_switches.Keys(), [=](const auto &reply) {
            const Reads reads = std::exchange(m_batch, {});
            if (reply.isError())
                report("a read", reply.error());
            else
                take(reads);
        });
    }

    void take(const Reads &reads)
    {
        for (auto it = reads.begin(); it != reads.end(); ++it) {
            if (it->isError())
                return report("a read", it->error());
            const QString &key = it.key();
            const QString word = wordFor(it.value());
            if (m_words.value(key) != word)
                say(key + ' ' + word);
            m_words.insert(key, word);
            const QString wish = m_wishes.value(key, word);
            if (wish != word)
                write(key, wish == "on");
        }
        read({});
    }

    void write(const QString &key, bool value)
    {
        whenAnswered(m_policies.SetKeyValue(key, QDBusVariant(value)), [=](const auto &reply) {
            if (reply.isError())
                report(key, reply.error());
            else
                say(key + (reply.value() ? " is set" : " is refused"));
        });
    }

    void report(const QString &what, const QDBusError &error)
    {
        if (error.type() == QDBusError::AccessDenied && m_wishes.contains(what))
            return say(what + " is not allowed: " + error.message());
        say(what + " has no answer: " + error.name());
        if (!m_owner.isEmpty()) // else all is read later; a new connection has no unanswered calls
            QCoreApplication::quit();
    }

    const QMap<QString, QString> m_wishes;
    QMap<QString, QString> m_words; // how each policy reads
    Reads m_batch; // in flight
    QSet<QString> m_changed; // policies for the next batch
    QString m_owner;
    QDBusConnection m_bus = QDBusConnection::systemBus();
    QDBusServiceWatcher m_watcher{Service, m_bus};
    org::kvt::PolicyManager::Policy m_policies{Service, Path, m_bus};
    org::kvt::PolicyManager::Switch m_switches{Service, Path, m_bus};
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    qRegisterMetaType<QDBusVariant>(); // without it Qt 6 delivers no signal that has one
    const QStringList policies = listPolicies();
    if (policies.isEmpty())
        return end(1, "govctl does not list the policies");
    QMap<QString, QString> wishes;
    const QStringList arguments = application.arguments().mid(1);
    for (const QString &argument : arguments) {
        const QString key = argument.section('=', 0, 0), wish = argument.section('=', 1);
        if (wish != "on" && wish != "off")
            return end(2, "usage: agent-qt [POLICY=on|off]...");
        if (policies.contains(key))
            wishes.insert(key, wish);
        else // the daemon would accept it
            say(key + " is no policy");
    }
    const Agent agent(policies, wishes);
    QCoreApplication::exec();
    return 1;
}
