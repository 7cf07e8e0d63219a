// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_GOVCTL_GOVCTL_H
#define GOVD_TESTS_GOVCTL_GOVCTL_H

#include "support/identity.h"

#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

/// What one run of the client gave.
struct Outcome
{
    int code = -1; ///< -1 when a signal ended it, or the test
    QString out;
    QString err;

    QStringList lines() const;

    /// The only line of standard output as a document that the schema allows. Fails the test, and
    /// gives an empty object, when it is not that, when its code is not the exit code, or when
    /// there is anything on standard error.
    QJsonObject json() const;

    /// The part of json() that tells what was found or done.
    QJsonObject result() const { return json().value(QStringLiteral("result")).toObject(); }

    /// The name of the error in json().
    QString error() const;
};

/// The start of a script of bash: its descriptor 3 is a pipe that nobody reads.
extern const QString PipeWithoutReader;

/// Checks one line of JSON against the installed schema; an empty object, and a failed test, if it
/// is not valid.
QJsonObject validDocument(const QByteArray &line);

/// The installed client as a process of its own.
class Govctl
{
    Q_DISABLE_COPY(Govctl)

public:
    explicit Govctl(const Support::Identity &identity = Support::Identity::root());
    ~Govctl();

    void setEnvironment(const QString &name, const QString &value);

    /// Removes everything from the environment.
    void clearEnvironment();

    /// Runs the client with @p arguments, split at blanks, to its end.
    Outcome run(const QString &arguments);
    Outcome run(const QStringList &arguments);

    /// Runs a script of bash under the same conditions.
    Outcome shell(const QString &script);

    /// Starts the client, or a script of bash, and returns at once; finish() waits for its end.
    void start(const QStringList &arguments);
    void startShell(const QString &script);
    Outcome finish();

    /// What a started client has written to standard output so far.
    QString out() const { return QString::fromUtf8(m_out); }

    /// Waits until @p text stands in what a started client has written so far.
    [[nodiscard]] bool waitForOut(const QString &text);
    [[nodiscard]] bool waitForErr(const QString &text);

    qint64 processId() const { return m_process.processId(); }

    /// Ends a started client, as the interrupt key does.
    void interrupt();

private:
    void launch(const QString &program, const QStringList &arguments);

    Support::Identity m_identity;
    QProcessEnvironment m_environment;
    QProcess m_process;
    QByteArray m_out;
    QByteArray m_err;
};

#endif
