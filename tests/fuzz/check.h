// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_CHECK_H
#define GOVD_TESTS_FUZZ_CHECK_H

#include <QString>

#include <cstdio>
#include <cstdlib>

/// Ends the process with @p complaint unless @p holds; the fuzzer then keeps the input.
inline void require(bool holds, const QByteArray &complaint)
{
    if (holds)
        return;
    std::fprintf(stderr, "fuzz: %s\n", complaint.constData());
    std::abort();
}

/// The same for a call of the bus library, which gives a negative error number.
inline void requireDone(int result, const char *what)
{
    require(result >= 0, QByteArray(what) + ": error " + QByteArray::number(-result));
}

/// For qInstallMessageHandler(): drops the log, as the daemon logs each of the many refused values.
inline void ignoreMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    require(type != QtFatalMsg, "fatal message: " + text.toUtf8());
}

#endif
