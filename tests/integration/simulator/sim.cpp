// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"

#include "support/waiting.h"

#include <QJsonDocument>
#include <QtTest>

#include <csignal>

using namespace Support;

namespace {

const QString Program = QStringLiteral("/usr/libexec/govd-sim");

} // namespace

QStringList Sim::Outcome::lines() const
{
    return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QJsonObject Sim::Outcome::json() const
{
    const QJsonObject document = QJsonDocument::fromJson(out.toUtf8()).object();
    const bool isGood = lines().size() == 1 && err.isEmpty()
        && document.value(QStringLiteral("version")).toInt() == 1
        && document.value(QStringLiteral("code")).toInt(-1) == code;
    if (isGood)
        return document;
    qCritical() << "not one good document alone:" << out << err << code;
    QTest::qFail("not one good document alone", __FILE__, __LINE__);
    return {};
}

void Sim::install()
{
    const int code = QProcess::execute(
        QStringLiteral("cmake"),
        {QStringLiteral("--install"), QStringLiteral(GOVD_BUILD), QStringLiteral("--prefix"),
         QStringLiteral("/usr"), QStringLiteral("--component"), QStringLiteral("simulator")});
    if (code != 0)
        qFatal("The simulator cannot be installed");
}

Sim::Sim()
{
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput,
                     [this] { m_out += m_process.readAllStandardOutput(); });
    QObject::connect(&m_process, &QProcess::readyReadStandardError,
                     [this] { m_err += m_process.readAllStandardError(); });
}

Sim::~Sim()
{
    m_process.kill();
    m_process.waitForFinished();
}

void Sim::start(const QStringList &arguments)
{
    launch(Program, arguments);
}

void Sim::startShell(const QString &script)
{
    launch(QStringLiteral("/bin/bash"),
           {QStringLiteral("-c"), QStringLiteral("SIM=%1; %2").arg(Program, script)});
}

void Sim::launch(const QString &program, const QStringList &arguments)
{
    m_process.start(program, arguments);
    if (!m_process.waitForStarted())
        QTest::qFail("the simulator cannot be started", __FILE__, __LINE__);
}

bool Sim::startDevice(const QStringList &options)
{
    start(QStringList{QStringLiteral("device")} + options);
    const auto isReady = [this] {
        return err().contains(QStringLiteral("the device is on the bus\n"));
    };
    return waitFor([&] { return isReady() || m_process.state() == QProcess::NotRunning; })
        && isReady();
}

Sim::Outcome Sim::finish()
{
    if (!waitFor([this] { return m_process.state() == QProcess::NotRunning; })) {
        QTest::qFail("the simulator does not end", __FILE__, __LINE__);
        return {};
    }
    const bool hasEnded = m_process.exitStatus() == QProcess::NormalExit;
    return {hasEnded ? m_process.exitCode() : -1, out(), err()};
}

Sim::Outcome Sim::run(const QString &arguments)
{
    Sim sim;
    sim.start(QProcess::splitCommand(arguments));
    return sim.finish();
}

Sim::Outcome Sim::shell(const QString &script)
{
    Sim sim;
    sim.startShell(script);
    return sim.finish();
}

QVector<QJsonObject> Sim::results() const
{
    QVector<QJsonObject> results;
    for (const QByteArray &line : m_out.split('\n')) {
        const QJsonObject document = QJsonDocument::fromJson(line).object();
        if (!document.isEmpty())
            results.append(document.value(QStringLiteral("result")).toObject());
    }
    return results;
}

bool Sim::waitForOut(const QString &text)
{
    return waitFor([&] { return out().contains(text); });
}

void Sim::signal(int number)
{
    ::kill(static_cast<pid_t>(m_process.processId()), number);
}
