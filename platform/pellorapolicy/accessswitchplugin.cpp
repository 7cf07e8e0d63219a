// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "pellorapolicy/accessswitchplugin.h"

namespace Pellora {

AccessSwitchPlugin::AccessSwitchPlugin(QObject *parent)
    : QObject(parent)
{
}

AccessSwitchPlugin::~AccessSwitchPlugin() = default;

} // namespace Pellora
