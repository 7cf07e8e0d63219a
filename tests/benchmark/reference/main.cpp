// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/policy.h"
#include "names.h"

#include <QCoreApplication>
#include <QDBusConnection>

/// govd-reference SERVICE FILE [KEY...]
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    Caller caller;
    new Policy(&caller, arguments.value(2).toStdString(), arguments.mid(3));
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(Names::ObjectPath, &caller, QDBusConnection::ExportAdaptors)
        || !bus.registerService(arguments.value(1)))
        return 1;
    return application.exec();
}
