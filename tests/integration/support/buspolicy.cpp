// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/buspolicy.h"

#include "support/bus.h"
#include "support/files.h"

namespace Support {

namespace {

const QString Configuration = QStringLiteral("/usr/share/dbus-1/system.conf");

void apply(const QByteArray &configuration)
{
    Files::write(Configuration, configuration);
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    const QDBusMessage reply = Bus().call(QDBusMessage::createMethodCall(
        bus, QStringLiteral("/org/freedesktop/DBus"), bus, QStringLiteral("ReloadConfig")));
    if (reply.type() != QDBusMessage::ReplyMessage)
        qFatal("The bus does not take its rules: %s", qPrintable(reply.errorMessage()));
}

} // namespace

BusPolicy::BusPolicy(const QByteArray &rule)
    : m_original(Files::read(Configuration))
{
    QByteArray changed = m_original;
    // Of two rules that fit, the later one counts.
    changed.replace("</busconfig>", "<policy user='root'>" + rule + "</policy></busconfig>");
    apply(changed);
}

BusPolicy::~BusPolicy()
{
    apply(m_original);
}

} // namespace Support
