// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BUSPOLICY_H
#define GOVD_TESTS_SUPPORT_BUSPOLICY_H

#include <QByteArray>

namespace Support {

/// An additional rule of the sandbox's system bus for root. Gone with this object.
class BusPolicy
{
    Q_DISABLE_COPY(BusPolicy)

public:
    /// @p rule as in the configuration of the bus, for example "<deny own='org.example'/>".
    explicit BusPolicy(const QByteArray &rule);
    ~BusPolicy();

private:
    QByteArray m_original;
};

} // namespace Support

#endif
