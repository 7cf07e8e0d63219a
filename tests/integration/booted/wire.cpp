// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "wire.h"

#include <QtEndian>

namespace Wire {

namespace {

enum Serial : quint32 { HelloSerial = 1, CallSerial = 2 };
enum MessageType : char { MethodCall = 1, MethodReturn = 2, Error = 3 };
enum Field : char {
    Path = 1,
    Interface = 2,
    Member = 3,
    ReplySerial = 5,
    Destination = 6,
    Signature = 8
};

constexpr int FixedHeaderSize = 16;

void align(QByteArray &bytes, int size)
{
    bytes.append((size - bytes.size() % size) % size, '\0');
}

void appendNumber(QByteArray &bytes, quint32 number)
{
    align(bytes, 4);
    const quint32 ordered = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char *>(&ordered), sizeof ordered);
}

void appendString(QByteArray &bytes, const QByteArray &text)
{
    appendNumber(bytes, static_cast<quint32>(text.size()));
    bytes.append(text).append('\0');
}

void appendSignature(QByteArray &bytes, const QByteArray &text)
{
    bytes.append(static_cast<char>(text.size())).append(text).append('\0');
}

void appendField(QByteArray &fields, Field code, char type, const QByteArray &text)
{
    if (text.isEmpty())
        return;
    align(fields, 8);
    fields.append(code);
    appendSignature(fields, QByteArray(1, type));
    if (type == 'g')
        appendSignature(fields, text);
    else
        appendString(fields, text);
}

struct Address
{
    QByteArray service;
    QByteArray path;
};

QByteArray bodyOf(const Call &call)
{
    QByteArray body;
    if (call.key.isEmpty())
        return body;
    appendString(body, call.key);
    if (call.hasValue) {
        appendSignature(body, "b");
        appendNumber(body, 0);
    }
    return body;
}

QByteArray message(Serial serial, const Address &address, const Call &call)
{
    const QByteArray body = bodyOf(call);
    QByteArray fields;
    appendField(fields, Path, 'o', address.path);
    appendField(fields, Destination, 's', address.service);
    appendField(fields, Interface, 's', call.interface);
    appendField(fields, Member, 's', call.member);
    if (!body.isEmpty())
        appendField(fields, Signature, 'g', call.hasValue ? "sv" : "s");

    QByteArray bytes("l");
    bytes.append(MethodCall).append('\0').append('\1');
    appendNumber(bytes, static_cast<quint32>(body.size()));
    appendNumber(bytes, serial);
    appendNumber(bytes, static_cast<quint32>(fields.size()));
    bytes.append(fields);
    align(bytes, 8);
    return bytes + body;
}

quint32 numberAt(const QByteArray &bytes, int position)
{
    return qFromLittleEndian<quint32>(bytes.constData() + position);
}

/// The whole message that answers the one with @p serial; empty when it has not come yet.
QByteArray answerTo(Serial serial, const QByteArray &bytes)
{
    QByteArray mark("\5\1u\0", 4);
    static_assert(ReplySerial == 5, "the mark begins with this field's code");
    appendNumber(mark, serial);

    int position = bytes.indexOf("\r\n") + 2; // behind the words of the login
    while (position >= 2 && bytes.size() >= position + FixedHeaderSize) {
        const int fields = static_cast<int>(numberAt(bytes, position + 12));
        const int header = FixedHeaderSize + (fields + 7) / 8 * 8;
        const int size = header + static_cast<int>(numberAt(bytes, position + 4));
        const QByteArray whole = bytes.mid(position, size);
        if (whole.size() < size)
            break;
        if (whole.left(header).contains(mark))
            return whole;
        position += size;
    }
    return QByteArray();
}

} // namespace

QByteArray conversation(unsigned user, const Call &call)
{
    const QByteArray bus("org.freedesktop.DBus");
    const QByteArray login =
        '\0' + ("AUTH EXTERNAL " + QByteArray::number(user).toHex()) + "\r\nBEGIN\r\n";
    return login + message(HelloSerial, {bus, "/org/freedesktop/DBus"}, {bus, "Hello", {}, false})
        + message(CallSerial, {"org.kvt.PolicyManager", "/org/kvt/PolicyManager"}, call);
}

Answer answerIn(const QByteArray &bytes)
{
    const QByteArray answer = answerTo(CallSerial, bytes);
    if (answer.isEmpty())
        return Answer::None;
    if (answer.at(1) == MethodReturn)
        return Answer::Good;
    if (!answer.contains("org.freedesktop.DBus.Error.AccessDenied"))
        return Answer::OtherError;
    return answer.contains("is not in pellora-mdm group") ? Answer::RefusedByDaemon
                                                          : Answer::RefusedByBus;
}

bool isWelcomeIn(const QByteArray &bytes)
{
    return !answerTo(HelloSerial, bytes).isEmpty();
}

} // namespace Wire
