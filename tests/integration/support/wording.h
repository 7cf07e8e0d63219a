// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_WORDING_H
#define GOVD_TESTS_SUPPORT_WORDING_H

#include "support/busmessage.h"

namespace Support {

/// Messages of the bus as lines of text, so that a list of them can be compared with what a test
/// writes down.
namespace Wording {

/// "call MEMBER ARGUMENT...", "signal MEMBER ARGUMENT...", "reply ARGUMENT..." or "error NAME". The
/// arguments are JSON, so that a text differs from a value that looks like it.
QString exact(const BusMessage &message);

/// The arguments as exact() ends in them, each with a blank before it.
QString exact(const QVariantList &arguments);

/// "MEMBER ARGUMENT..." for calls and signals, "return ARGUMENT..." or "error NAME ARGUMENT...",
/// with plain arguments. The bus name @p caller is written as "caller".
QString plain(const BusMessage &message, const QString &caller);

/// "TARGET METHOD SIGNATURE [ARGUMENTS]" for a call, the arguments as JSON. The target is
/// "SERVICE PATH INTERFACE".
QString call(const QString &target, const QString &method, const QString &signature,
             const QVariantList &arguments);
QString call(const BusMessage &message);

} // namespace Wording

} // namespace Support

#endif
