// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_SAMEVALUE_H
#define GOVD_MANAGER_SAMEVALUE_H

class QVariant;

/// Whether a write of @p value changes nothing where @p stored is the value.
///
/// Values of different types are converted first, as QVariant's operator does in Qt 5. That of Qt 6
/// does not, and takes no rounding of a number for the same.
bool isSameValue(const QVariant &stored, const QVariant &value);

#endif
