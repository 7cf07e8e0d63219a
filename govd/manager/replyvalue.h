// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_REPLYVALUE_H
#define GOVD_MANAGER_REPLYVALUE_H

class QVariant;

/// Whether readers can be given @p value, which came over the bus.
///
/// QtDBus receives an empty signature but cannot send it: stored, it would leave every reader of
/// its policy without an answer. A value that holds descriptors, however deep, would take one more
/// of the daemon's for each reader.
bool canBeGivenBack(const QVariant &value);

#endif
