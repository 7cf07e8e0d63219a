// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "control.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QSocketNotifier>

#include <cstdio>

#include <dlfcn.h>
#include <fcntl.h>

namespace {

/// The name of the file that this code was loaded from; a library can be installed several times.
QString ownFileName()
{
    static const char here = 0;
    Dl_info info = {};
    dladdr(&here, &info);
    return QFileInfo(QFile::decodeName(info.dli_fname)).fileName();
}

} // namespace

Control::Control()
    : m_base(QLatin1String("/run/govd-test/") + ownFileName())
{
    // Also open for writing, so that the pipe does not end when the test closes it.
    const int pipe =
        open(qPrintable(m_base + QLatin1String(".orders")), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    m_orders.open(pipe, QIODevice::ReadWrite | QIODevice::Unbuffered, QFile::AutoCloseHandle);
    auto *notifier = new QSocketNotifier(pipe, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &Control::obey);
}

QJsonObject Control::state() const
{
    QFile file(m_base + QLatin1String(".state"));
    file.open(QIODevice::ReadOnly);
    return QJsonDocument::fromJson(file.readAll()).object();
}

void Control::setState(const QJsonObject &state)
{
    const QString path = m_base + QLatin1String(".state");
    const QString fresh = path + QLatin1String(".own");
    QFile file(fresh);
    file.open(QIODevice::WriteOnly);
    file.write(QJsonDocument(state).toJson());
    file.close();
    std::rename(qPrintable(fresh), qPrintable(path));
}

void Control::note(const QString &call)
{
    QFile file(m_base + QLatin1String(".calls"));
    file.open(QIODevice::WriteOnly | QIODevice::Append);
    file.write(call.toUtf8() + '\n');
}

void Control::obey()
{
    const QByteArray line = m_orders.readLine();
    Q_EMIT ordered(QJsonDocument::fromJson(line).object());
    note(QStringLiteral("done"));
}
