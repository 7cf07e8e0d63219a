// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_UNIT_PRIVATEBUS_H
#define GOVD_TESTS_UNIT_PRIVATEBUS_H

#include <QProcess>
#include <QTemporaryDir>

/// A bus of the test's own, which this process and its children take for the system bus. To be
/// started before anything uses the system bus; ends with the object.
class PrivateBus
{
public:
    ~PrivateBus();

    /// Starts the bus. A call that tries to start the absent service @p activatable, if one is
    /// named, is noticed.
    bool start(const QString &activatable = {});

    /// Whether somebody has made the bus start the activatable service.
    bool hasActivated() const;

private:
    bool write(const QString &name, const QString &content);

    QTemporaryDir m_directory;
    QProcess m_daemon;
};

#endif
