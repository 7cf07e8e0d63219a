// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_REPLYVALUE_H
#define GOVD_MANAGER_REPLYVALUE_H

class QVariant;

/// Whether replies can hold @p value, which came over the bus.
///
/// QtDBus receives an empty signature but cannot send it: every read of the policy would stay
/// without a reply. A value that holds descriptors, at any depth, would take one more of the
/// daemon's descriptors for each reply.
bool canBeGivenBack(const QVariant &value);

#endif
