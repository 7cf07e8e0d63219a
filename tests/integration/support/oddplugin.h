// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_ODDPLUGIN_H
#define GOVD_TESTS_SUPPORT_ODDPLUGIN_H

#include "support/switchplugin.h"

namespace Support {

/// A file in the access-switch plugin's place that is none, or not quite: the file @p library of
/// the built test plugins.
class OddPlugin : public TestPlugin
{
public:
    explicit OddPlugin(const char *library)
        : TestPlugin(QString::fromLatin1(library), SwitchPlugin::location())
    {
    }
};

} // namespace Support

#endif
