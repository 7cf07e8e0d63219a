// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QXmlStreamReader>
#include <QtTest>

namespace {

QString contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}

/// The members that an interface file describes, each with its arguments as the pages write them:
/// "KeyValue in s out v".
QStringList described(const QString &interface)
{
    QStringList members;
    QXmlStreamReader xml(
        contentOf(QStringLiteral("/usr/share/dbus-1/interfaces/%1.xml").arg(interface)));
    bool isSignal = false;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("method") || xml.name() == QLatin1String("signal")) {
            isSignal = xml.name() == QLatin1String("signal");
            members.append(attributes.value(QLatin1String("name")).toString());
        } else if (xml.name() == QLatin1String("arg")) {
            if (!isSignal)
                members.last() +=
                    QLatin1Char(' ') + attributes.value(QLatin1String("direction")).toString();
            members.last() += QLatin1Char(' ') + attributes.value(QLatin1String("type")).toString();
        }
    }
    members.sort();
    return members;
}

/// The members that a manual page lists, in the same form; the names of arguments do not count.
QStringList documented(const QString &interface)
{
    QStringList members;
    const QString page = contentOf(QStringLiteral(GOVD_MANUAL_PAGES "/%1.5.md").arg(interface));
    const QRegularExpression entry(QStringLiteral("^## (\\w+)\\(([^)]*)\\)$"),
                                   QRegularExpression::MultilineOption);
    for (auto match = entry.globalMatch(page); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        QString member = found.captured(1);
        const QRegularExpression argument(QStringLiteral("((?:in |out )?\\w+) \\w+"));
        for (auto next = argument.globalMatch(found.captured(2)); next.hasNext();)
            member += QLatin1Char(' ') + next.next().captured(1);
        members.append(member);
    }
    members.sort();
    return members;
}

} // namespace

/// The manual pages of the bus interfaces against the interface files.
class TestInterfacePages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void policies();
    void switches();
};

void TestInterfacePages::policies()
{
    const QString interface = QStringLiteral("org.kvt.PolicyManager.Policy");
    QCOMPARE(documented(interface).size(), 3);
    QCOMPARE(documented(interface), described(interface));
}

void TestInterfacePages::switches()
{
    const QString interface = QStringLiteral("org.kvt.PolicyManager.Switch");
    QStringList expected = described(interface);
    // The page gives the type that is sent, and explains why the interface file has another.
    expected.replaceInStrings(QStringLiteral("SetKeyValue in s in v out i"),
                              QStringLiteral("SetKeyValue in s in v out b"));
    QCOMPARE(documented(interface), expected);
}

QTEST_APPLESS_MAIN(TestInterfacePages)
#include "tst_interfacepages.moc"
