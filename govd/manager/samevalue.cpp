// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "samevalue.h"

#include "writerecord.h"

#include <QStringList>
#include <QVariant>

#include <cmath>
#include <type_traits>

namespace {

bool isNumber(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

bool isText(const QVariant &value)
{
    return value.userType() == QMetaType::QString || value.userType() == QMetaType::QByteArray;
}

bool hasSixtyFourBits(const QVariant &number)
{
    return number.userType() == QMetaType::LongLong || number.userType() == QMetaType::ULongLong;
}

quint64 bits(const QVariant &number)
{
    return number.userType() == QMetaType::ULongLong ? number.toULongLong()
                                                     : quint64(number.toLongLong());
}

/// Integers are compared in the wider of their types, and in the unsigned one of two of one width.
bool isSameNumber(const QVariant &one, const QVariant &other)
{
    if (one.userType() == QMetaType::Double || other.userType() == QMetaType::Double) {
        const double a = one.toDouble();
        const double b = other.toDouble();
        return a == b || (std::isfinite(a) && std::isfinite(b) && qFuzzyCompare(a, b));
    }
    const quint64 difference = bits(one) ^ bits(other);
    return hasSixtyFourBits(one) || hasSixtyFourBits(other) ? difference == 0
                                                            : quint32(difference) == 0;
}

template <typename Number, typename Text> bool isInteger(const QVariant &number, const Text &text)
{
    bool isValid = false;
    const auto read = std::is_signed<Number>::value ? Number(text.toLongLong(&isValid))
                                                    : Number(text.toULongLong(&isValid));
    return isValid && read == number.value<Number>();
}

/// Whether @p text is @p number as its type holds it: what does not fit loses its upper bits.
template <typename Text> bool isWritten(const QVariant &number, const Text &text)
{
    switch (number.userType()) {
    case QMetaType::UChar:
        return isInteger<uchar>(number, text);
    case QMetaType::Short:
        return isInteger<short>(number, text);
    case QMetaType::UShort:
        return isInteger<ushort>(number, text);
    case QMetaType::Int:
        return isInteger<int>(number, text);
    case QMetaType::UInt:
        return isInteger<uint>(number, text);
    case QMetaType::LongLong:
        return isInteger<qlonglong>(number, text);
    case QMetaType::ULongLong:
        return isInteger<qulonglong>(number, text);
    default:
        break;
    }
    bool isValid = false;
    const double read = text.toDouble(&isValid);
    return isValid && read == number.toDouble();
}

bool isNumberInText(const QVariant &number, const QVariant &text)
{
    if (number.userType() == QMetaType::Bool)
        return number.toBool() == text.toBool();
    // Qt 6 itself ignores ASCII white space only.
    return text.userType() == QMetaType::QString ? isWritten(number, text.toString().trimmed())
                                                 : isWritten(number, text.toByteArray());
}

} // namespace

bool isSameValue(const QVariant &stored, const QVariant &value)
{
    if (isNumber(stored) && isNumber(value))
        return isSameNumber(stored, value);
    if (isNumber(stored) && isText(value))
        return isNumberInText(stored, value);
    // QVariant makes no text of a byte, so the text is converted, though it is the stored value.
    if (isText(stored) && value.userType() == QMetaType::UChar)
        return isNumberInText(value, stored);

    const bool hasText = isText(value) || isNumber(value);
    const bool isList = value.userType() == QMetaType::QStringList;
    switch (stored.userType()) {
    case QMetaType::QString:
        return isList ? value.toStringList() == QStringList(stored.toString())
                      : hasText && valueText(value) == stored.toString();
    case QMetaType::QByteArray:
        return hasText && value.toByteArray() == stored.toByteArray();
    case QMetaType::QStringList:
        return (isList || value.userType() == QMetaType::QString)
            && value.toStringList() == stored.toStringList();
    default:
        // Paths, signatures, structures and other containers differ from everything.
        return false;
    }
}
