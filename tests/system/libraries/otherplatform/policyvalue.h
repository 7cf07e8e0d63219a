// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef OTHERPLATFORM_POLICYVALUE_H
#define OTHERPLATFORM_POLICYVALUE_H

#include <QObject>

namespace Pellora {

/// The policies of a platform with few policies, other names, and gaps between the numbers.
class Q_DECL_EXPORT PolicyValue
{
    Q_GADGET

public:
    enum PolicyType : int {
        UsbAllowed = 45, ///< its number is larger than the count of keys, but it is listed first
        NoPolicy = 0,
        LensAllowed = 1,
        UserReportExportEnabled = 2, ///< the daemon knows this name, and does nothing for number 2
        TorchAllowed = 3,
        userReportExportEnabled = 5, ///< differs in case from a name that the daemon uses
        ReportsAllowed = 41,
    };
    Q_ENUM(PolicyType)
};

} // namespace Pellora

#endif
