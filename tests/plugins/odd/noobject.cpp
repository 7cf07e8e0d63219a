// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QObject>
#include <QtPlugin>

/// A plugin that loads, but cannot make its root object.
class NoObject : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kvt.brinos.AccessSwitchPlugin/1.0")

public:
    static void *operator new(size_t) noexcept { return nullptr; }
    static void *operator new(size_t, void *place) noexcept { return place; } // Qt 6 needs it
};

#include "noobject.moc"
