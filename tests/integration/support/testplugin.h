// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_TESTPLUGIN_H
#define GOVD_TESTS_SUPPORT_TESTPLUGIN_H

#include "support/linefile.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace Support {

/// A plugin of the test's own in a place where the daemon looks for plugins.
///
/// The plugin does as its state says, which it reads afresh in every call, so a change holds from
/// the next call on. It notes down each call that it gets. Removed with this object.
class TestPlugin
{
    Q_DISABLE_COPY(TestPlugin)

public:
    virtual ~TestPlugin();

    QString path() const;

    QJsonObject state() const;
    void setState(const QJsonObject &state);

    /// The calls so far, but the first @p since ones: the operation, and its arguments after
    /// blanks.
    QStringList calls(int since = 0) const;

    /// The number of calls so far.
    int mark() const;

    /// Waits for a call, or another event that the plugin notes down, that contains @p text.
    [[nodiscard]] bool waitForCall(const QString &text, int since = 0) const;

protected:
    /// Installs the file @p library of the built test plugins as @p path.
    TestPlugin(const QString &library, const QString &path);

    /// Has the plugin of the running daemon carry out @p order, and waits until it has.
    void order(const QJsonObject &order);

private:
    QString m_path;
    QString m_control;
    LineFile m_calls;
};

} // namespace Support

#endif
