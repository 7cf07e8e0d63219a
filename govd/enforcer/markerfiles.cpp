// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "handlers.h"
#include "names.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

bool createEmptyFile(const QString &path)
{
    return QFile(path).open(QIODevice::WriteOnly);
}

/// Creates or removes a file that exists while a feature is allowed.
void markEnabled(const QString &path, bool enabled)
{
    if (enabled) {
        QDir().mkpath(QFileInfo(path).path()); // after a failure the next step fails and logs it
        if (!QFile::exists(path) && !createEmptyFile(path))
            qWarning() << "Failed to create file:" << path;
    } else if (QFile::exists(path) && !QFile::remove(path)) {
        qWarning() << "Failed to remove file:" << path;
    }
}

bool createDeveloperShellMarker()
{
    const QDir directory(Names::DeveloperShellDirectory);
    if (!directory.exists() && !directory.mkpath(QStringLiteral(".")))
        return false;
    return createEmptyFile(Names::DeveloperShellMarker);
}

} // namespace

void markCamera(PolicyEnforcementTask task)
{
    markEnabled(Names::CameraMarker, task.value);
}

void markUserReport(PolicyEnforcementTask task)
{
    markEnabled(Names::UserReportMarker, task.value);
}

/// The reverse of the markers above: the file exists while the shell is forbidden.
void markDeveloperShell(PolicyEnforcementTask task)
{
    const bool isDisabled = QFile::exists(Names::DeveloperShellMarker);
    if (task.value) {
        if (isDisabled && !QFile::remove(Names::DeveloperShellMarker))
            qWarning() << "Failed to enable devel-su";
    } else if (!isDisabled && !createDeveloperShellMarker()) {
        qWarning() << "Failed to disable devel-su";
    }
}
