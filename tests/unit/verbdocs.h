// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_VERBDOCS_H
#define GOVD_TESTS_UNIT_VERBDOCS_H

#include <QCommandLineOption>
#include <QtTest>

// What is tested of the verbs of every program that has some. Each program has a class Verb of its
// own.

/// A row of test data for each verb: its "index".
template <typename Verb> void addVerbRows(const QVector<Verb> &verbs)
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < verbs.size(); ++i)
        QTest::newRow(qPrintable(verbs[i].name)) << i;
}

/// What a program's help does not say of a verb, although its table does. @p overview is the help
/// about all verbs, @p help that about this one, @p common are the options of all.
template <typename Verb>
QStringList missingInHelp(const Verb &verb, const QString &overview, const QString &help,
                          const QList<QCommandLineOption> &common)
{
    QStringList missing;
    if (!overview.contains(verb.summary))
        missing.append(verb.summary);
    QStringList words;
    for (const QCommandLineOption &option : verb.options + common) {
        for (const QString &name : option.names())
            words.append(QLatin1Char('-') + name);
    }
    for (const auto &argument : verb.arguments)
        words.append(argument.syntax());
    for (const QString &word : words) {
        if (!help.contains(word))
            missing.append(word);
    }
    return missing;
}

#endif
