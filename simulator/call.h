// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_CALL_H
#define GOVD_SIMULATOR_CALL_H

#include <QDateTime>
#include <QMetaType>
#include <QVariantList>

class QDBusMessage;

namespace Simulator {

/// A method call that a service has got.
struct Call
{
    Call() = default;
    explicit Call(const QDBusMessage &message);

    QDateTime time;
    QString sender; ///< unique name of the caller
    QString path;
    QString interface; ///< empty when the caller left it out
    QString member;
    QString signature; ///< D-Bus types of the arguments as they came
    QVariantList arguments; ///< as plain values: variants are unwrapped, object paths are texts
    QString errorName; ///< of the answer; empty when it is no error
};

} // namespace Simulator

Q_DECLARE_METATYPE(Simulator::Call)

#endif
