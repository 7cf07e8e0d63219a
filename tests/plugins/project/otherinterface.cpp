// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QObject>
#include <QtPlugin>

/// A plugin with an interface that the daemon does not use.
class OtherInterface : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.govd.test.OtherInterface")
};

#include "otherinterface.moc"
