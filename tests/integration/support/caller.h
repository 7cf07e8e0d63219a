// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_CALLER_H
#define GOVD_TESTS_SUPPORT_CALLER_H

#include "support/identity.h"
#include "support/waiting.h"

#include <QByteArray>
#include <QDBusVariant>
#include <QProcess>
#include <QString>
#include <QVariantList>

namespace Support {

/// What came back from a call.
struct Reply
{
    bool arrived = false; ///< false when the caller was gone before
    QString signature;
    QVariantList arguments; ///< a variant as its content
    QString errorName; ///< empty for a good reply
    QString errorMessage;

    bool isError() const { return !errorName.isEmpty(); }

    /// The first argument of a good reply.
    QVariant value() const { return arguments.value(0); }
};

/// A client of the daemon in a process of its own, under any identity. It makes one call.
///
/// The process connects to the bus after it took the identity, so that the bus knows it by that.
class Caller
{
    Q_DISABLE_COPY(Caller)

public:
    explicit Caller(const Identity &identity = Identity::root());
    ~Caller();

    /// How long the process waits for the reply, in milliseconds, before it takes NoReply for it.
    void setTimeout(int milliseconds);

    /// Sends a call of @p method of the daemon's interface @p interface ("Policy" or "Switch").
    /// Returns when the bus has taken it, which does not mean that the daemon has. Arguments of
    /// type QDBusVariant travel as variants, others as what they are.
    void send(const QString &interface, const QString &method, const QVariantList &arguments);

    /// Waits for the reply to what was sent.
    Reply reply();

    /// Sends a call and waits for its reply.
    Reply call(const QString &interface, const QString &method, const QVariantList &arguments);

    Reply policy(const QString &key);
    Reply setPolicy(const QString &key, const QVariant &value);
    Reply switchValue(const QString &key);
    Reply setSwitch(const QString &key, const QVariant &value);

    /// Kills the process. Returns when the bus has noticed, too.
    void vanish();

    /// The process id, from send() on; still known when the process has ended.
    qint64 processId() const;

    /// The unique name on the bus, from send() on.
    QString busName() const;

private:
    QByteArray nextLine();

    Identity m_identity;
    int m_timeout = Deadline;
    QProcess m_process;
    qint64 m_processId = 0;
    QString m_busName;
};

} // namespace Support

#endif
