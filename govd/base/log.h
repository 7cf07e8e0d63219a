// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_LOG_H
#define GOVD_BASE_LOG_H

#include <QtGlobal>

class QString;

/// How messages of Qt's message system become lines on stderr.
///
/// Each text in quotes, and each stretch between two of them, is cut at 1 KiB with a mark: only
/// what was made at run time is that long. Where stderr is the journal, each line carries its
/// priority, in the form that the journal takes off again.
namespace Log {

/// Of what callers without rights can cause, so many lines are written in so many milliseconds.
constexpr int Burst = 20;
constexpr int Period = 20'000;

/// To be called first of all in main().
void install();

/// @p text as a line would have it: cut at 1 KiB, with the mark.
QString shortenedText(const QString &text);

/// As long as an object lives, what this thread logs is caused by a caller that needs no right: of
/// such lines a burst is written, and then one line that says how many were left out. The same
/// holds for all threads but the main one. Critical and fatal messages are always written.
class Limited
{
    Q_DISABLE_COPY(Limited)

public:
    Limited();
    ~Limited();
};

} // namespace Log

#endif
