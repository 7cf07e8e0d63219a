// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_ATTEMPT_H
#define GOVD_TESTS_FUZZ_ATTEMPT_H

#include "tests/fuzz/choices.h"
#include "tests/fuzz/device.h"

/// One member of the daemon's interfaces, as documented.
struct Member
{
    const char *interface;
    const char *name;
    const char *arguments; ///< their signatures
};

/// A call of a member with arguments of any types, and what it asks for if the types are right.
class Attempt
{
public:
    /// Keys that every key file can hold, of policies and switches, and keys that none can.
    static const QList<QByteArray> GoodKeys;
    static const QList<QByteArray> BadKeys;

    Attempt(Device &device, Choices &choices);

    bool isOfSwitch() const { return qstrcmp(member.interface, "Switch") == 0; }
    bool isWrite() const { return qstrcmp(member.arguments, "sv") == 0; }

    /// Fills in the written value. It reads the message, which is possible only after sending.
    void readValue();

    const Member member;
    const Message message;
    bool isFitting; ///< by the types of the arguments
    QByteArray key;
    QByteArray value; ///< as RandomValue describes it
    bool reading = false; ///< the boolean reading of the value

private:
    void appendKey(Choices &choices);
    void appendValue(Choices &choices);
};

#endif
