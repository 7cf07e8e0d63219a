// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_GOVCTL_ASKINGVERBS_H
#define GOVD_TESTS_GOVCTL_ASKINGVERBS_H

#include <QtTest>

/// Fills a test's table, in the column "verb", with a row for each verb that wants an answer of
/// the daemon itself.
inline void addAskingVerbs()
{
    QTest::addColumn<QString>("verb");
    for (const char *verb :
         {"summary", "list", "get CameraEnabled", "set CameraEnabled off", "explain CameraEnabled",
          "switch list", "switch get radio", "switch set radio off", "verify", "export",
          "watch --once", "status", "dump"}) {
        QTest::newRow(verb) << QString::fromLatin1(verb);
    }
}

#endif
