// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_CALLLOG_H
#define GOVD_SIMULATOR_PROGRAM_CALLLOG_H

#include "commandline/output.h"
#include "simulator/program/device.h"

namespace Simulator {

/// Prints one line for each thing that happens on the device.
class CallLog
{
public:
    explicit CallLog(Output &output);

    void print(const Happening &happening);

private:
    QString toText(const Happening &happening) const;
    QString outcomeOf(const Happening &happening) const;

    Output &m_output;
};

} // namespace Simulator

#endif
