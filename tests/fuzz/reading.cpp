// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/fuzz/reading.h"

#include "tests/fuzz/check.h"

#include <QVariant>

#include <cstring>

namespace Reading {

namespace {

bool isFalseText(const QByteArray &text)
{
    return text.isEmpty() || text == "0" || text.toLower() == "false";
}

bool ofNumber(sd_bus_message *message, char type)
{
    quint64 bits = 0;
    requireDone(sd_bus_message_read_basic(message, type, &bits), "number");
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    // Qt rounds before it compares, and its result for NaN and infinity is not specified.
    return type == 'd' ? QVariant(number).toBool() : bits != 0;
}

} // namespace

void enter(sd_bus_message *message)
{
    const char *content = nullptr;
    require(sd_bus_message_peek_type(message, nullptr, &content) > 0 && content, "no variant");
    const QByteArray signature = content; // gone once it is entered
    requireDone(sd_bus_message_enter_container(message, 'v', signature.constData()), "variant");
}

bool boolean(sd_bus_message *message)
{
    char type = 0;
    const char *content = nullptr;
    require(sd_bus_message_peek_type(message, &type, &content) > 0, "no value");
    if (std::strchr("ybnqiuxtd", type))
        return ofNumber(message, type);
    if (type == 's') {
        const char *text = nullptr;
        requireDone(sd_bus_message_read_basic(message, type, &text), "text");
        return !isFalseText(text);
    }
    if (type == 'a' && qstrcmp(content, "y") == 0) {
        const void *bytes = nullptr;
        std::size_t size = 0;
        requireDone(sd_bus_message_read_array(message, 'y', &bytes, &size), "bytes");
        return !isFalseText(QByteArray(static_cast<const char *>(bytes), int(size)));
    }
    return false;
}

bool cannotBeHandedOut(QByteArray described)
{
    if (described.contains("hfd "))
        return true;
    while (described.startsWith("v"))
        described = described.mid(described.indexOf('<') + 1).chopped(1);
    return described == "g ";
}

} // namespace Reading
