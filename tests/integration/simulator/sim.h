// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SIMULATOR_SIM_H
#define GOVD_TESTS_SIMULATOR_SIM_H

#include <QJsonObject>
#include <QProcess>
#include <QStringList>

/// The installed simulator as a process of its own.
class Sim
{
    Q_DISABLE_COPY(Sim)

public:
    /// What one run gave.
    struct Outcome
    {
        int code = -1; ///< -1 when a signal ended it, or the test
        QString out;
        QString err;

        QStringList lines() const;

        /// The only line of standard output as a document. Fails the test, and gives an empty
        /// object, when it is not that, or when its code is not the exit code.
        QJsonObject json() const;
    };

    /// Installs the simulator, which a plain installation leaves out.
    static void install();

    Sim();
    ~Sim();

    /// Starts it with @p arguments and returns at once.
    void start(const QStringList &arguments);

    /// Starts a script of bash in which "$SIM" is the simulator.
    void startShell(const QString &script);

    /// Starts a device. False when it ends before it is ready.
    [[nodiscard]] bool startDevice(const QStringList &options = {});

    /// Waits for the end.
    Outcome finish();

    /// Runs it with @p arguments, split as a script's line is, to its end.
    static Outcome run(const QString &arguments);
    static Outcome shell(const QString &script);

    QString out() const { return QString::fromUtf8(m_out); }
    QString err() const { return QString::fromUtf8(m_err); }

    /// The lines of JSON that it has written so far: the results in them.
    QVector<QJsonObject> results() const;

    [[nodiscard]] bool waitForOut(const QString &text);

    void signal(int number);

private:
    void launch(const QString &program, const QStringList &arguments);

    QProcess m_process;
    QByteArray m_out;
    QByteArray m_err;
};

#endif
