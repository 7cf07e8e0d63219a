// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BUSMESSAGE_H
#define GOVD_TESTS_SUPPORT_BUSMESSAGE_H

#include <QByteArray>
#include <QString>
#include <QVariantList>

namespace Support {

/// One message as it passed the bus.
struct BusMessage
{
    enum Type { Call, Return, Error, Signal };

    Type type = Call;
    QString sender; ///< unique name, or that of the bus itself
    QString destination; ///< as the sender wrote it
    QString path;
    QString interface;
    QString member;
    QString errorName;
    QString signature;
    QVariantList arguments; ///< a variant as its content
    quint32 serial = 0;
    quint32 replySerial = 0;

    /// Reads one line of "busctl --json=short monitor".
    static BusMessage fromJson(const QByteArray &line);

    /// Whether this is a call of the method @p method.
    bool isCallOf(const QString &method) const;

    /// Whether this is the signal @p name.
    bool isSignal(const QString &name) const;

    /// Whether this is the reply, good or bad, to @p call.
    bool answers(const BusMessage &call) const;
};

} // namespace Support

#endif
