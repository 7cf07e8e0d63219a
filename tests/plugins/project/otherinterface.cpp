// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QObject>
#include <QtPlugin>

/// A plugin of a kind that the daemon does not know.
class OtherInterface : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.govd.test.OtherInterface")
};

#include "otherinterface.moc"
