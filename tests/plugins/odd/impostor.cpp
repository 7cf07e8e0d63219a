// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QFile>
#include <QObject>
#include <QtPlugin>

/// A plugin with the metadata of an access-switch plugin, but a root object of another class. It
/// records when that object is made and deleted.
class Impostor : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kvt.brinos.AccessSwitchPlugin/1.0")

public:
    Impostor() { note("made\n"); }
    ~Impostor() override { note("deleted\n"); }

private:
    static void note(const char *event)
    {
        QFile file(QStringLiteral("/run/govd-test/libpelloraswitchplugin.so.calls"));
        if (file.open(QIODevice::WriteOnly | QIODevice::Append))
            file.write(event);
    }
};

#include "impostor.moc"
