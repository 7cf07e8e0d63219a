// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// Values of every D-Bus type as policies: over the bus into the store, the file, the audit event
// and the announcement, and back to a reader.
//
// An input is the policy, the signature of the value, and the value's bytes; see Choices.
#include "names.h"
#include "tests/fuzz/check.h"
#include "tests/fuzz/device.h"
#include "tests/fuzz/randomvalue.h"
#include "tests/fuzz/reading.h"

#include <QCoreApplication>
#include <QFile>

namespace {

const QList<QByteArray> Keys{"NfcEnabled", "CameraEnabled", "DeveloperShellEnabled",
                             "org.example.Wish"};
constexpr char OtherKey[] = "VpnEnabled";

Device *device = nullptr;

Message change(const QByteArray &key, const QByteArray &signature, Choices &choices)
{
    Message message = device->call("Policy", "SetKeyValue");
    sd_bus_message *content = message.get();
    requireDone(sd_bus_message_append(content, "s", key.constData()), "key");
    requireDone(sd_bus_message_open_container(content, 'v', signature.constData()), "open");
    RandomValue::append(content, signature, choices);
    requireDone(sd_bus_message_close_container(content), "close");
    return message;
}

/// Structures are never equal, not even to each other, so this is always a change.
Message changeToStructure(const QByteArray &key)
{
    Message message = device->call("Policy", "SetKeyValue");
    requireDone(sd_bus_message_append(message.get(), "sv", key.constData(), "(b)", 1), "structure");
    return message;
}

/// Sends @p first, then the questions for @p key and for another key, and waits for all replies.
std::vector<Message> exchange(const Message &first, const QByteArray &key)
{
    const Message readBack = device->question("Policy", key);
    const Message other = device->question("Policy", OtherKey);
    std::vector<Message> replies = device->exchange({&first, &readBack, &other});
    if (!replies.at(0) || !replies.at(1)) {
        requireDone(sd_bus_message_rewind(first.get(), true), "rewind");
        require(false, "no answer about the value: " + RandomValue::describe(first.get()));
    }
    return replies;
}

bool isTrue(const Message &reply)
{
    int result = 0;
    require(sd_bus_message_read(reply.get(), "b", &result) > 0,
            "the answer to a write is no boolean");
    return result != 0;
}

/// The value in @p message, behind a key if it has one.
sd_bus_message *valueIn(const Message &message, bool hasKey)
{
    requireDone(sd_bus_message_rewind(message.get(), true), "rewind");
    if (hasKey)
        requireDone(sd_bus_message_skip(message.get(), "s"), "key");
    Reading::enter(message.get());
    return message.get();
}

void checkNoEffects(const Message &answer)
{
    require(RandomValue::describe(valueIn(answer, false)) == "rb<b1 >",
            "a refused value was stored");
    require(device->events().isEmpty() && device->announcements().isEmpty(),
            "a refused value was told to others");
}

void checkEffects(const QByteArray &key, bool value)
{
    // The event and the announcement come before the reply, but on another way.
    Peer::waitFor([] { return device->events().size() > 0 && device->announcements().size() > 0; },
                  "the event and the announcement");
    const QByteArray start = "Policy " + key + " changed. Old value . New value ";
    require(device->events().size() == 1 && device->events().first().startsWith(start),
            "odd events: " + device->events().join('|'));
    const QByteArray announcement = "PolicyChanged " + key + (value ? " vb<b1 >" : " vb<b0 >");
    require(device->announcements() == QByteArrayList{announcement},
            "odd announcements: " + device->announcements().join('|'));
    QFile file(Names::PolicyFile);
    require(file.open(QIODevice::ReadOnly), "no file");
    require(file.readAll().contains('\n' + key + (value ? "=true\n" : "=false\n")), "odd file");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    qInstallMessageHandler(ignoreMessage);
    device = new Device;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    Choices choices(data, size);
    const QByteArray key = choices.among(Keys);
    const QByteArray signature = RandomValue::signature(choices);

    require(isTrue(exchange(changeToStructure(key), key).front()), "a structure is refused");
    Peer::waitFor([] { return !device->events().isEmpty(); }, "the event before");
    device->forget();

    const Message written = change(key, signature, choices);
    const std::vector<Message> answers = exchange(written, key);
    const bool isAccepted = isTrue(answers.front());
    const QByteArray expected = RandomValue::describe(valueIn(written, true));
    require(isAccepted != Reading::cannotBeHandedOut(expected),
            "a value is refused, or a bad one taken");
    if (!isAccepted) {
        checkNoEffects(answers.at(1));
        return 0;
    }
    require(RandomValue::describe(valueIn(answers.at(1), false)) == expected,
            "a value has changed");
    checkEffects(key, Reading::boolean(valueIn(written, true)));
    return 0;
}
