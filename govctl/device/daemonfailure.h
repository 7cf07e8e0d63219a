// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DAEMONFAILURE_H
#define GOVCTL_DAEMONFAILURE_H

#include "result.h"

class QDBusError;

/// Failures of calls to the daemon, with the messages that users read.
namespace DaemonFailure {

Failure noBus(const QString &reason);
Failure noService();
Failure foreignOwner(uint user);
Failure badAnswer(const QString &what);
Failure noAnswer(double seconds);

Failure notAllowed();
Failure busRefuses();

/// The failure for an error reply; @p ofBus is true when the bus itself has sent it.
Failure fromError(const QDBusError &error, bool ofBus);

} // namespace DaemonFailure

#endif
