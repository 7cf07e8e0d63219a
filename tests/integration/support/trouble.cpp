// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/trouble.h"

#include <QStringList>
#include <QTest>

using Simulator::Fault;

namespace Support {

QVector<Trouble> Trouble::of(const QString &service)
{
    const QString refused = QStringLiteral("org.example.Refused");
    return {
        {"absent", Fault(), QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"),
         QStringLiteral("The name %1 was not provided by any .service files").arg(service)},
        {"error", Fault::error(refused), refused, QStringLiteral("Failed on purpose")},
        {"death", Fault::death(), QStringLiteral("org.freedesktop.DBus.Error.NoReply"),
         QStringLiteral("Message recipient disconnected from message bus without replying")},
    };
}

void Trouble::addRows(const QString &service)
{
    QTest::addColumn<Trouble>("trouble");
    for (const Trouble &trouble : of(service))
        QTest::newRow(trouble.name.constData()) << trouble;
}

QVector<Oddity> Oddity::all()
{
    return {
        {"late", Fault::late(200)},
        {"a number", Fault::wrongAnswer({7})},
        {"false", Fault::wrongAnswer({false})},
        {"a list", Fault::wrongAnswer({QStringList{QStringLiteral("a"), QStringLiteral("b")}})},
    };
}

void Oddity::addRows()
{
    QTest::addColumn<Oddity>("oddity");
    for (const Oddity &oddity : all())
        QTest::newRow(oddity.name.constData()) << oddity;
}

} // namespace Support
