// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/brokenplugin.h"

namespace Support {

namespace {

QString libraryOf(BrokenPlugin::Kind kind)
{
    switch (kind) {
    case BrokenPlugin::NoLibrary:
        return QStringLiteral("notalibrary.txt");
    case BrokenPlugin::NoRoot:
        return QStringLiteral("noroot.so");
    case BrokenPlugin::OtherInterface:
        return QStringLiteral("otherinterface.so");
    }
    Q_UNREACHABLE();
}

} // namespace

BrokenPlugin::BrokenPlugin(Kind kind, const QString &path)
    : TestPlugin(libraryOf(kind), path)
{
}

} // namespace Support
