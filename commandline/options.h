// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMANDLINE_OPTIONS_H
#define GOVD_COMMANDLINE_OPTIONS_H

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

/// An option without a value.
QCommandLineOption flag(const QStringList &names, const QString &description);

/// The options that every verb of every program has. What the time-out is for, the program says
/// with @p timeoutDescription.
QList<QCommandLineOption> sharedOptions(const QString &timeoutDescription);

#endif
