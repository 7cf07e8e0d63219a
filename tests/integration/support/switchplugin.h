// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_SWITCHPLUGIN_H
#define GOVD_TESTS_SUPPORT_SWITCHPLUGIN_H

#include "support/testplugin.h"

#include <QJsonValue>
#include <QList>

namespace Support {

/// The access-switch plugin of the tests. Its state, a JSON object:
///
///     "switches"   object from the switch's key to an object:
///         "types"     list of the numbers of the policies that it governs
///         "value"     what keyValue gives: true or false; a whole number gives a failure code,
///                     text a value of a wrong type, null an invalid value
///         "result"    what setKeyValue gives (default 0); with 0 the new value is kept in "value"
///         "announce"  when an accepted value is announced: "inside" the call (default), "later"
///                     from the event loop, or "never"
///     "unknown"    failure code for keys that are no switches (default -1)
///     "hold"       list of operations that do not return as long as they stand here
class SwitchPlugin : public TestPlugin
{
public:
    SwitchPlugin();

    /// Where the daemon looks for the access-switch plugin.
    static QString location();

    /// Adds or replaces a switch.
    void setSwitch(const QString &key, const QList<int> &types, const QJsonValue &value);

    /// Sets one entry of a switch's object.
    void setEntry(const QString &key, const QString &entry, const QJsonValue &value);

    /// The present "value" of a switch.
    QJsonValue value(const QString &key) const;

    /// Makes @p operation wait, once called, until release(). Each wait is noted down as "holding".
    void hold(const QString &operation);
    void release();

    /// Emits keyValueChanged in the running daemon. Returns when that is done.
    void announce(const QString &key, const QJsonValue &value);
};

} // namespace Support

#endif
