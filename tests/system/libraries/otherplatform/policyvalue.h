// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef OTHERPLATFORM_POLICYVALUE_H
#define OTHERPLATFORM_POLICYVALUE_H

#include <QObject>

namespace Pellora {

/// The policies of a platform that has few of them, calls them by other names, and numbers them
/// with holes.
class Q_DECL_EXPORT PolicyValue
{
    Q_GADGET

public:
    enum PolicyType : int {
        UsbAllowed = 45, ///< as number beyond the number of keys, but first of all
        NoPolicy = 0,
        LensAllowed = 1,
        UserReportExportEnabled = 2, ///< the daemon knows this name, and does nothing for number 2
        TorchAllowed = 3,
        userReportExportEnabled = 5, ///< the daemon knows no name in these letters
        ReportsAllowed = 41,
    };
    Q_ENUM(PolicyType)
};

} // namespace Pellora

#endif
