// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmonitor.h"

#include "support/waiting.h"

#include <QUuid>

namespace Support {

namespace {

const char Marker[] = "org.govd.test.Marker";

QString newMarker()
{
    return QUuid::createUuid().toString();
}

void sendMarker(const QDBusConnection &connection, const QString &marker)
{
    QDBusMessage message = QDBusMessage::createSignal(
        QStringLiteral("/"), QString::fromLatin1(Marker), QStringLiteral("Settled"));
    message.setArguments({marker});
    connection.send(message);
}

} // namespace

BusMonitor::BusMonitor()
    : m_output(m_directory.filePath(QStringLiteral("messages")))
{
    m_process.setStandardOutputFile(m_output.path());
    m_process.start(
        QStringLiteral("busctl"),
        {QStringLiteral("--system"), QStringLiteral("--json=short"), QStringLiteral("monitor")});
    // What tells that the connection has become a monitor is that it sees what others send.
    const QDBusConnection sender = m_bus.connect();
    const QString marker = newMarker();
    if (!Support::waitFor([&] {
            sendMarker(sender, marker);
            return m_output.contains(marker);
        }))
        qFatal("The bus monitor does not start");
    clear();
}

BusMonitor::~BusMonitor()
{
    m_process.kill();
    m_process.waitForFinished();
}

void BusMonitor::settle()
{
    passDaemon();
    settleBus();
}

void BusMonitor::settleBus()
{
    const QString marker = newMarker();
    sendMarker(m_bus.connect(), marker);
    if (!m_output.waitForLine(marker, m_start))
        qFatal("The bus monitor does not see what is sent");
}

void BusMonitor::passDaemon()
{
    const QString service = QStringLiteral("org.kvt.PolicyManager");
    if (!m_bus.hasOwner(service))
        return;
    // Answered by the daemon's main thread, after all that came before, without any of its code.
    m_bus.call(QDBusMessage::createMethodCall(service, QStringLiteral("/org/kvt/PolicyManager"),
                                              QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                              QStringLiteral("Introspect")));
}

void BusMonitor::clear()
{
    settleBus();
    m_start = m_output.mark();
}

QVector<BusMessage> BusMonitor::messages(const Condition &condition) const
{
    QVector<BusMessage> found;
    const QStringList lines = m_output.lines(m_start);
    for (const QString &line : lines) {
        const BusMessage message = BusMessage::fromJson(line.toUtf8());
        if (!condition || condition(message))
            found.append(message);
    }
    return found;
}

QVector<BusMessage> BusMonitor::calls(const QString &method, const QString &sender) const
{
    return messages([&](const BusMessage &message) {
        return message.isCallOf(method) && (sender.isEmpty() || message.sender == sender);
    });
}

QVector<BusMessage> BusMonitor::announcements(const QString &name) const
{
    return messages([&](const BusMessage &message) { return message.isSignal(name); });
}

bool BusMonitor::waitFor(const Condition &condition)
{
    return Support::waitFor([&] { return !messages(condition).isEmpty(); });
}

QString BusMonitor::uniqueName(const QString &name)
{
    settleBus();
    QString owner;
    const QVector<BusMessage> changes = announcements(QStringLiteral("NameOwnerChanged"));
    for (const BusMessage &change : changes) {
        const QString newOwner = change.arguments.value(2).toString();
        if (change.arguments.value(0) == name && !newOwner.isEmpty())
            owner = newOwner;
    }
    return owner;
}

} // namespace Support
