// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BROKENPLUGIN_H
#define GOVD_TESTS_SUPPORT_BROKENPLUGIN_H

#include "support/testplugin.h"

namespace Support {

/// A file in a plugin's place that is no working plugin. The daemon asks it nothing.
class BrokenPlugin : public TestPlugin
{
public:
    enum Kind {
        NoLibrary, ///< text
        NoRoot, ///< a library that is no plugin at all
        OtherInterface ///< a plugin of another kind
    };

    BrokenPlugin(Kind kind, const QString &path);
};

} // namespace Support

#endif
