// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BORROWEDSOCKETS_H
#define GOVD_TESTS_SUPPORT_BORROWEDSOCKETS_H

#include <QVector>

namespace Support {

/// The sockets of another process, held open beyond the end of that process until this object is
/// gone. The bus then goes on knowing a caller whose process does not exist any more.
class BorrowedSockets
{
    Q_DISABLE_COPY(BorrowedSockets)

public:
    explicit BorrowedSockets(qint64 process);
    ~BorrowedSockets();

private:
    QVector<int> m_sockets;
};

} // namespace Support

#endif
