// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMON_LOG_H
#define GOVD_COMMON_LOG_H

#include <QtGlobal>

/// How messages of Qt's message system become lines on stderr.
///
/// Each text made at run time is cut at 1 KiB with a mark. Where stderr is the journal, each line
/// carries its priority, in the form that the journal takes off again.
namespace Log {

/// To be called first of all in main().
void install();

/// As long as an object lives, what this thread logs counts as caused by a caller that needs no
/// right: of such lines a burst is written, and then one line that says how many were left out.
class Limited
{
    Q_DISABLE_COPY(Limited)

public:
    explicit Limited(bool isLimited);
    ~Limited();

private:
    bool m_before;
};

} // namespace Log

#endif
