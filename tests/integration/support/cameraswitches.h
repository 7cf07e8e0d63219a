// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_CAMERASWITCHES_H
#define GOVD_TESTS_SUPPORT_CAMERASWITCHES_H

#include "support/switchplugin.h"

namespace Support {

/// A plugin with two switches that govern the camera, "a" and "b", and "c" that does not. The two
/// are on, the other is off.
class CameraSwitches : public SwitchPlugin
{
public:
    CameraSwitches();

    /// The two that govern the camera, in the order of the running daemon's table.
    QStringList inOrder();

    /// Sets the two as inOrder() has them.
    void setInOrder(bool first, bool second);

    /// The calls of the daemon when it looks for the switches of the camera, and asks @p asked for
    /// their values.
    static QStringList callsFor(const QStringList &asked);
};

} // namespace Support

#endif
