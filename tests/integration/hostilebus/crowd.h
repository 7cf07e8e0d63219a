// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_CROWD_H
#define GOVD_TESTS_HOSTILEBUS_CROWD_H

#include "support/identity.h"
#include "support/linefile.h"

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <vector>

/// A light client of the daemon in a process of its own, govd-test-crowd, under any identity.
class CrowdClient
{
    Q_DISABLE_COPY(CrowdClient)

public:
    /// Starts it with a verb of that program and its arguments.
    CrowdClient(const Support::Identity &identity, const QStringList &arguments);
    ~CrowdClient();

    bool isRunning() const;

    /// Waits for its end. False when it failed; one that killed itself has not.
    [[nodiscard]] bool waitForEnd();

    /// Waits for a line of its output that contains @p text.
    [[nodiscard]] bool waitForLine(const QString &text) const;

    /// What it has printed so far.
    QStringList lines() const { return m_output.lines(); }

private:
    QTemporaryDir m_directory;
    Support::LineFile m_output;
    QProcess m_process;
};

/// Runs one client from start to end and returns what it printed. Ends the test program when the
/// client fails.
QStringList runClient(const Support::Identity &identity, const QStringList &arguments);

/// A user of the sandbox, and whether it may change values.
struct CrowdUser
{
    const char *name;
    bool mayWrite;

    Support::Identity identity() const;
};

/// Every kind of user.
const std::vector<CrowdUser> &crowdUsers();

/// What a client printed about its own calls, with the user that it ran as.
struct Account
{
    CrowdUser user;
    QStringList lines;
};

/// Runs @p clients workers at once, users of every kind by turns, each with @p calls calls of
/// which @p odd of a hundred are odd ones, and returns their accounts. Client number n draws its
/// calls from the seed @p seed + n. Ends the test program when a client fails.
std::vector<Account> runWorkers(int clients, int calls, int odd, unsigned seed,
                                const QStringList &keys);

/// The number of rounds, calls or clients that a test makes: @p many when GOVD_HOLD is set.
int amount(int few, int many);

#endif
