// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_LOCKPLUGIN_H
#define GOVD_TESTS_SUPPORT_LOCKPLUGIN_H

#include "support/testplugin.h"

namespace Support {

/// A lock plugin of the tests. Its state, a JSON object:
///
///     "name"       what name() gives
///     "supported"  list of keys that supportedPolicies() gives
///     "locked"     list of keys for which policyIsLocked() gives true
class LockPlugin : public TestPlugin
{
public:
    /// Installs it under the file name @p file in the directory of lock plugins.
    explicit LockPlugin(const QString &file, const QString &name,
                        const QStringList &supported = {});

    /// The directory in which the daemon looks for lock plugins.
    static QString directory();

    void setLocked(const QStringList &keys);

    /// Emits policyIsLockedChanged in the running daemon. Returns when that is done.
    void announce(const QString &key, bool isLocked);

    /// The same, but from a thread of the plugin's own.
    void announceFromThread(const QString &key, bool isLocked);

    /// Ends the event loop of the running daemon with @p code.
    void endEventLoop(int code);
};

} // namespace Support

#endif
