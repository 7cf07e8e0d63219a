// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"

#include "support/waiting.h"

using Support::Identity;

namespace {

/// No client writes the numbers 0 and 1, which equal booleans.
constexpr int FirstNumber = 1000;

constexpr int LongRun = 3600000; // milliseconds

QStringList privilegeOptions(const Identity &identity)
{
    QStringList groups;
    for (const gid_t id : identity.groups)
        groups.append(QString::number(id));
    return {QStringLiteral("--reuid"),
            QString::number(identity.user),
            QStringLiteral("--regid"),
            QString::number(identity.group),
            groups.isEmpty() ? QStringLiteral("--clear-groups")
                             : QLatin1String("--groups=") + groups.join(QLatin1Char(',')),
            QStringLiteral("--")};
}

} // namespace

CrowdClient::CrowdClient(const Identity &identity, const QStringList &arguments)
    : m_output(m_directory.filePath(QStringLiteral("output")))
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setStandardOutputFile(m_output.path());
    m_process.start(QStringLiteral("setpriv"),
                    privilegeOptions(identity) + QStringList(QStringLiteral(GOVD_TEST_CROWD))
                        + arguments);
    if (!m_process.waitForStarted())
        qFatal("A client cannot be started: %s", qPrintable(m_process.errorString()));
}

CrowdClient::~CrowdClient()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool CrowdClient::isRunning() const
{
    return m_process.state() != QProcess::NotRunning;
}

bool CrowdClient::waitForEnd()
{
    return Support::waitFor([this] { return !isRunning(); }, LongRun)
        && (m_process.exitStatus() == QProcess::CrashExit || m_process.exitCode() == 0);
}

bool CrowdClient::waitForLine(const QString &text) const
{
    return m_output.waitForLine(text);
}

QStringList runClient(const Identity &identity, const QStringList &arguments)
{
    CrowdClient client(identity, arguments);
    if (!client.waitForEnd())
        qFatal("The client \"%s\" has failed", qPrintable(arguments.join(QLatin1Char(' '))));
    return client.lines();
}

Identity CrowdUser::identity() const
{
    return qstrcmp(name, "root") == 0 ? Identity::root() : Identity::of(name);
}

const std::vector<CrowdUser> &crowdUsers()
{
    static const std::vector<CrowdUser> users = {
        {"root", true},  {"operator", true},   {"deputy", false}, {"mdm", true},
        {"agent", true}, {"pretender", false}, {"guest", false},
    };
    return users;
}

std::vector<Account> runWorkers(int clients, int calls, int odd, unsigned seed,
                                const QStringList &keys)
{
    std::vector<std::unique_ptr<CrowdClient>> running;
    std::vector<Account> accounts;
    for (int i = 0; i < clients; ++i) {
        const CrowdUser user = crowdUsers().at(size_t(i) % crowdUsers().size());
        accounts.push_back({user, {}});
        running.push_back(std::make_unique<CrowdClient>(
            user.identity(),
            QStringList{QStringLiteral("work"), QString::number(seed + unsigned(i)),
                        QString::number(FirstNumber + i * calls), QString::number(calls),
                        QString::number(odd)}
                + keys));
    }
    for (size_t i = 0; i < running.size(); ++i) {
        if (!running[i]->waitForEnd())
            qFatal("Client %zu has failed", i);
        accounts[i].lines = running[i]->lines();
    }
    return accounts;
}

int amount(int few, int many)
{
    return qEnvironmentVariableIsSet("GOVD_HOLD") ? many : few;
}
