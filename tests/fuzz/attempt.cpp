// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/fuzz/attempt.h"

#include "tests/fuzz/check.h"
#include "tests/fuzz/randomvalue.h"
#include "tests/fuzz/reading.h"

namespace {

const QList<Member> Members{
    {"Policy", "KeyValue", "s"},     {"Policy", "SetKeyValue", "sv"},   {"Switch", "KeyValue", "s"},
    {"Switch", "SetKeyValue", "sv"}, {"Switch", "KeyPolicyTypes", "s"}, {"Switch", "Keys", ""},
};

constexpr int MostArguments = 3;

QByteArray chooseSignature(const Member &member, Choices &choices)
{
    if (choices.below(2) == 0)
        return member.arguments;
    QByteArray signature;
    for (int count = choices.below(MostArguments + 1); count > 0; --count)
        signature += RandomValue::signature(choices);
    return signature;
}

} // namespace

const QList<QByteArray> Attempt::GoodKeys{"CameraEnabled", "NfcEnabled", "org.example.Wish",
                                          "camera",        "radio",      "VpnEnabled"};
const QList<QByteArray> Attempt::BadKeys{"",   "a=b",      "[policy]", "#x",
                                         " x", "Encoding", "x\ny=true"};

Attempt::Attempt(Device &device, Choices &choices)
    : member(Members.at(choices.below(Members.size())))
    , message(device.call(member.interface, member.name))
{
    const QByteArray signature = chooseSignature(member, choices);
    isFitting = signature == member.arguments;
    if (!isFitting)
        RandomValue::append(message.get(), signature, choices, GoodKeys + BadKeys);
    else if (!signature.isEmpty())
        appendKey(choices);
    if (isFitting && isWrite())
        appendValue(choices);
}

void Attempt::appendKey(Choices &choices)
{
    static const QList<QByteArray> known = GoodKeys + BadKeys;
    const bool isKnown = choices.below(2) == 0;
    const QByteArray text = isKnown ? choices.among(known) : choices.text();
    key = text.constData(); // the bus library reads up to a NUL
    if (sd_bus_message_append(message.get(), "s", key.constData()) >= 0)
        return;
    key.clear(); // the bus takes UTF-8 only
    requireDone(sd_bus_message_append(message.get(), "s", ""), "key");
}

void Attempt::appendValue(Choices &choices)
{
    const QByteArray signature = RandomValue::signature(choices);
    requireDone(sd_bus_message_open_container(message.get(), 'v', signature.constData()), "open");
    RandomValue::append(message.get(), signature, choices);
    requireDone(sd_bus_message_close_container(message.get()), "close");
}

void Attempt::readValue()
{
    if (!isFitting || !isWrite())
        return;
    requireDone(sd_bus_message_rewind(message.get(), true), "rewind");
    requireDone(sd_bus_message_skip(message.get(), "s"), "key");
    value = RandomValue::describe(message.get());
    requireDone(sd_bus_message_rewind(message.get(), true), "rewind");
    requireDone(sd_bus_message_skip(message.get(), "s"), "key");
    Reading::enter(message.get());
    reading = Reading::boolean(message.get());
}
