// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/bare/store.h"
#include "names.h"

#include <QCoreApplication>
#include <QDBusConnection>

/// govd-reference-bare SERVICE
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QObject object;
    new Store(&object);
    QDBusConnection bus = QDBusConnection::systemBus();
    const QString service = application.arguments().value(1);
    if (!bus.registerObject(Names::ObjectPath, &object, QDBusConnection::ExportAdaptors)
        || !bus.registerService(service))
        return 1;
    return application.exec();
}
