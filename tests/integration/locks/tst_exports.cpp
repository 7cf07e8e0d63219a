// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/files.h"

#include <QProcess>
#include <QTest>

namespace {

/// The names that the program at @p path defines for others, each once: compilers differ in how
/// many copies of a constructor they make.
QStringList exportedNames(const QString &path)
{
    QProcess nm;
    nm.start(QStringLiteral("nm"),
             {QStringLiteral("--dynamic"), QStringLiteral("--defined-only"),
              QStringLiteral("--demangle"), QStringLiteral("--format=just-symbols"), path});
    if (!nm.waitForFinished() || nm.exitCode() != 0)
        return {QStringLiteral("nm failed: ") + QString::fromUtf8(nm.readAllStandardError())};
    QStringList names =
        QString::fromUtf8(nm.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    names.removeDuplicates();
    names.sort();
    return names;
}

QStringList listedNames()
{
    QStringList names = QString::fromUtf8(Support::Files::read(QStringLiteral(GOVD_TEST_EXPORTS)))
                            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    names.sort();
    return names;
}

} // namespace

/// What lock plugins resolve against the daemon, and nothing else of the daemon's own, can be seen
/// from outside.
class TestExports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void daemonExportsWhatIsListed();
};

void TestExports::daemonExportsWhatIsListed()
{
    const QStringList exported = exportedNames(QStringLiteral("/usr/sbin/govd"));
    QCOMPARE(exported.join(QLatin1Char('\n')), listedNames().join(QLatin1Char('\n')));
}

QTEST_GUILESS_MAIN(TestExports)
#include "tst_exports.moc"
