// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/testplugin.h"

#include "support/files.h"
#include "support/waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Support {

namespace {

/// Where plugins look for their state; each under the name of its own file.
QString controlOf(const QString &path)
{
    return QLatin1String("/run/govd-test/") + QFileInfo(path).fileName();
}

} // namespace

TestPlugin::TestPlugin(const QString &library, const QString &path)
    : m_path(path)
    , m_control(controlOf(path))
    , m_calls(m_control + QLatin1String(".calls"))
{
    QDir().mkpath(QFileInfo(m_control).path());
    QDir().mkpath(QFileInfo(path).path());
    QFile::remove(path);
    if (!QFile::copy(QStringLiteral(GOVD_TEST_PLUGINS "/") + library, path))
        qFatal("Cannot install %s as %s", qPrintable(library), qPrintable(path));
    Files::write(m_calls.path(), {});
    mkfifo(qPrintable(m_control + QLatin1String(".orders")), 0600);
    setState({});
}

TestPlugin::~TestPlugin()
{
    QFile::remove(m_path);
    for (const char *ending : {".state", ".calls", ".orders"})
        QFile::remove(m_control + QLatin1String(ending));
}

QString TestPlugin::path() const
{
    return m_path;
}

QJsonObject TestPlugin::state() const
{
    return QJsonDocument::fromJson(Files::read(m_control + QLatin1String(".state"))).object();
}

void TestPlugin::setState(const QJsonObject &state)
{
    // Renamed into place, so that the plugin never reads half of it.
    const QString path = m_control + QLatin1String(".state");
    const QString fresh = path + QLatin1String(".new");
    Files::write(fresh, QJsonDocument(state).toJson());
    if (std::rename(qPrintable(fresh), qPrintable(path)) != 0)
        qFatal("Cannot write %s", qPrintable(path));
}

QStringList TestPlugin::calls(int since) const
{
    return m_calls.lines(since);
}

int TestPlugin::mark() const
{
    return m_calls.mark();
}

bool TestPlugin::waitForCall(const QString &text, int since) const
{
    return m_calls.waitForLine(text, since);
}

void TestPlugin::order(const QJsonObject &order)
{
    const int before = mark();
    const QByteArray line = QJsonDocument(order).toJson(QJsonDocument::Compact) + '\n';
    // Without a plugin at the other end this fails at once instead of waiting for one.
    const int pipe = open(qPrintable(m_control + QLatin1String(".orders")), O_WRONLY | O_NONBLOCK);
    if (write(pipe, line.constData(), static_cast<size_t>(line.size())) != line.size())
        qFatal("No daemon has loaded %s", qPrintable(m_path));
    close(pipe);
    if (!waitForCall(QStringLiteral("done"), before))
        qFatal("The plugin %s does not obey", qPrintable(m_path));
}

} // namespace Support
