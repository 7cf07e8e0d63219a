// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DAEMONFAILURE_H
#define GOVCTL_DAEMONFAILURE_H

#include "commandline/result.h"

class QDBusError;

/// What can go wrong between this program and the daemon, in the words that users read.
namespace DaemonFailure {

Failure noBus(const QString &reason);
Failure noService();
Failure foreignOwner(uint user);
Failure badAnswer(const QString &what);
Failure noAnswer(double seconds);

/// The failure behind an error reply.
Failure fromError(const QDBusError &error);

} // namespace DaemonFailure

#endif
