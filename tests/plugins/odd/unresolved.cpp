// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QObject>
#include <QtPlugin>

/// Defined nowhere, as a function that is missing in the installed version of a library.
extern int govdTestDefinedNowhere;

/// A plugin that cannot be loaded.
class Unresolved : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kvt.brinos.AccessSwitchPlugin/1.0")

public:
    Unresolved() { setProperty("number", govdTestDefinedNowhere); }
};

#include "unresolved.moc"
