// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_SAMEVALUE_H
#define GOVD_MANAGER_SAMEVALUE_H

#include <QVariant>

/// Whether a write of @p value changes nothing where @p stored is the value.
///
/// Values of different types are converted first, as QVariant's operator does in Qt 5. That of Qt 6
/// does not, and takes no rounding of a number for the same.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
inline bool isSameValue(const QVariant &stored, const QVariant &value)
{
    return stored == value;
}
#else
bool isSameValue(const QVariant &stored, const QVariant &value);
#endif

#endif
