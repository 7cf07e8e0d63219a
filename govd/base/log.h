// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_LOG_H
#define GOVD_BASE_LOG_H

#include <QtGlobal>

class QString;

/// Writes the messages of Qt's logging to stderr, with limits on their length and number.
///
/// Each text in quotes, and each part between two of them, is cut at 1 KiB with a mark; only texts
/// made at run time are that long. When stderr is the journal's stream, each line begins with its
/// priority as "<N>", which the journal removes.
namespace Log {

/// Lines that callers without rights can cause: at most Burst in Period milliseconds.
constexpr int Burst = 20;
constexpr int Period = 20'000;

/// Installs the message handler. Call it first in main().
void install();

/// @p text cut at 1 KiB of UTF-8, with a mark; a shorter text is returned unchanged.
QString shortenedText(const QString &text);

/// While an object lives, the lines of this thread count as caused by a caller without rights, like
/// those of every thread other than the main one. Of such lines Burst are written in each Period,
/// then one that gives the number left out. Critical and fatal messages are always written.
class Limited
{
    Q_DISABLE_COPY(Limited)

public:
    Limited();
    ~Limited();
};

} // namespace Log

#endif
