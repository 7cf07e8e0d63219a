// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/borrowedsockets.h"

#include <QDir>
#include <QFileInfo>

#include <sys/syscall.h>
#include <unistd.h>

namespace Support {

BorrowedSockets::BorrowedSockets(qint64 process)
{
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(process));
    const QStringList names = descriptors.entryList(QDir::Files | QDir::System);
    for (const QString &name : names) {
        const QString target = QFileInfo(descriptors.filePath(name)).symLinkTarget();
        if (target.contains(QLatin1String("socket:")))
            m_sockets.append(static_cast<int>(syscall(SYS_pidfd_getfd, handle, name.toInt(), 0)));
    }
    close(handle);
    if (m_sockets.isEmpty() || m_sockets.contains(-1))
        qFatal("Cannot borrow the sockets of process %lld", process);
}

BorrowedSockets::~BorrowedSockets()
{
    for (const int socket : qAsConst(m_sockets))
        close(socket);
}

} // namespace Support
