// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DAEMONFAILURE_H
#define GOVCTL_DAEMONFAILURE_H

#include "govctl/result.h"

class QDBusError;

/// What can go wrong between this program and the daemon, in the words that users read.
namespace DaemonFailure {

Failure noBus(const QString &reason);
Failure noService();
Failure foreignOwner(uint user);
Failure badAnswer(const QString &what);
Failure noAnswer(double seconds);

Failure notAllowed();
Failure busRefuses();

/// The failure behind an error reply, which the bus itself has sent when @p ofBus is true.
Failure fromError(const QDBusError &error, bool ofBus);

} // namespace DaemonFailure

#endif
