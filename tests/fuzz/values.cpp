// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// Values of every D-Bus type as policies: over the bus into the store, the file, the audit event
// and the announcement, and back to a reader.
//
// An input is the policy, the signature of the value, and the value's bytes; see Choices.
#include "common/names.h"
#include "daemon/policymanager.h"
#include "tests/fuzz/check.h"
#include "tests/fuzz/peer.h"
#include "tests/fuzz/randomvalue.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <optional>

namespace {

constexpr char Service[] = "org.kvt.PolicyManager";
constexpr char Object[] = "/org/kvt/PolicyManager";
constexpr char Interface[] = "org.kvt.PolicyManager.Policy";

const QList<QByteArray> Keys{"NfcEnabled", "CameraEnabled", "DeveloperShellEnabled",
                             "org.example.Wish"};
constexpr char OtherKey[] = "VpnEnabled";

/// The daemon in this process, and a client and the log service outside its code.
struct Setting
{
    Setting();

    PolicyManager manager{nullptr};
    Peer peer;
    QByteArrayList events; ///< texts of the audit events since the last write
    QByteArrayList announcements; ///< the announced values, described

private:
    void take(sd_bus_message *message);
};

Setting *setting = nullptr;

Setting::Setting()
{
    manager.setupPolicies();
    QDBusConnection bus = QDBusConnection::systemBus();
    require(bus.registerObject(Names::ObjectPath, &manager, QDBusConnection::ExportAdaptors)
                && bus.registerService(Names::Service),
            "the daemon is not on the bus");
    require(sd_bus_request_name(peer.bus(), "org.kvtlabs.SystemLogs", 0) >= 0, "no log service");
    require(sd_bus_add_match(peer.bus(), nullptr, "type='signal',member='PolicyChanged'", nullptr,
                             nullptr)
                >= 0,
            "no signals");
    peer.listen([this](sd_bus_message *message) { take(message); });
}

void Setting::take(sd_bus_message *message)
{
    const char *text = nullptr;
    if (sd_bus_message_is_method_call(message, nullptr, "sendEventStringAlt")) {
        require(sd_bus_message_read(message, "sss", nullptr, nullptr, &text) > 0, "odd event");
        events.append(text);
        peer.send(Peer::reply(message));
    } else if (sd_bus_message_is_signal(message, Interface, "PolicyChanged")) {
        require(sd_bus_message_read(message, "s", nullptr) > 0, "odd announcement");
        announcements.append(RandomValue::describe(message));
    }
}

Message question(const char *key)
{
    Message message = setting->peer.call(Service, Object, Interface, "KeyValue");
    require(sd_bus_message_append(message.get(), "s", key) >= 0, "no question");
    return message;
}

Message change(const QByteArray &key, const QByteArray &signature, Choices &choices)
{
    Message message = setting->peer.call(Service, Object, Interface, "SetKeyValue");
    sd_bus_message *content = message.get();
    require(sd_bus_message_append(content, "s", key.constData()) >= 0
                && sd_bus_message_open_container(content, 'v', signature.constData()) >= 0,
            "no change");
    RandomValue::append(content, signature, choices);
    require(sd_bus_message_close_container(content) >= 0, "no end of a change");
    return message;
}

/// Sends @p first, then the questions for @p key and for another key, and waits for all replies.
QList<sd_bus_message *> exchange(const Message &first, const QByteArray &key,
                                 std::vector<Message> &replies)
{
    QList<sd_bus_message *> found{nullptr, nullptr, nullptr};
    const Message readBack = question(key.constData());
    const Message other = question(OtherKey);
    int place = 0;
    for (const Message *message : {&first, &readBack, &other}) {
        setting->peer.send(*message, [&found, &replies, place](Message reply) {
            found[place] = reply.get();
            replies.push_back(std::move(reply));
        });
        ++place;
    }
    // Replies come in the order of the questions, so one that is missing then never comes.
    Peer::waitFor([&] { return found.at(2) != nullptr; }, "the value of another policy");
    if (!found.at(0) || !found.at(1)) {
        sd_bus_message_rewind(first.get(), true);
        require(false, "no answer about the value: " + RandomValue::describe(first.get()));
    }
    return found;
}

bool isTrue(sd_bus_message *reply)
{
    int result = 0;
    require(sd_bus_message_read(reply, "b", &result) > 0, "the answer to a write is no boolean");
    return result != 0;
}

bool isFalseText(const QByteArray &text)
{
    return text.isEmpty() || text == "0" || text.toLower() == "false";
}

/// The boolean reading of the value at which @p message stands, by the documented rule.
bool reading(sd_bus_message *message)
{
    char type = 0;
    const char *content = nullptr;
    require(sd_bus_message_peek_type(message, &type, &content) > 0, "no value");
    if (std::strchr("ybnqiuxtd", type)) {
        quint64 bits = 0;
        sd_bus_message_read_basic(message, type, &bits);
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        // Qt rounds before it compares, and only Qt knows what it makes of what is no number.
        return type == 'd' ? QVariant(number).toBool() : bits != 0;
    }
    if (type == 's') {
        const char *text = nullptr;
        sd_bus_message_read_basic(message, type, &text);
        return !isFalseText(text);
    }
    if (type == 'a' && qstrcmp(content, "y") == 0) {
        const void *bytes = nullptr;
        std::size_t size = 0;
        sd_bus_message_read_array(message, 'y', &bytes, &size);
        return !isFalseText(QByteArray(static_cast<const char *>(bytes), int(size)));
    }
    return false;
}

void enterValue(sd_bus_message *message, bool hasKey, const QByteArray &signature)
{
    require(sd_bus_message_rewind(message, true) >= 0, "no rewind");
    if (hasKey)
        require(sd_bus_message_skip(message, "s") >= 0, "no key");
    require(sd_bus_message_enter_container(message, 'v', signature.constData()) > 0,
            "a value has changed its type");
}

/// The one value that the bus library receives and cannot send, so that no reader would ever get an
/// answer: "g" or "v" around it, as described.
bool isEmptySignature(QByteArray described)
{
    while (described.startsWith("v"))
        described = described.mid(described.indexOf('<') + 1).chopped(1);
    return described == "g ";
}

void checkNoEffects(sd_bus_message *answer)
{
    enterValue(answer, false, "(b)");
    require(RandomValue::describe(answer) == "rb<b1 >", "a refused value was stored");
    require(setting->events.isEmpty() && setting->announcements.isEmpty(),
            "a refused value was told to others");
}

void checkEffects(const QByteArray &key, bool value)
{
    // The event and the announcement come before the reply, but on another way.
    Peer::waitFor([] { return setting->events.size() > 0 && setting->announcements.size() > 0; },
                  "the event and the announcement");
    const QByteArray start = "Policy " + key + " changed. Old value . New value ";
    require(setting->events.size() == 1 && setting->events.first().startsWith(start),
            "odd events: " + setting->events.join('|'));
    require(setting->announcements == QByteArrayList{value ? "vb<b1 >" : "vb<b0 >"},
            "odd announcements: " + setting->announcements.join('|'));
    QFile file(Names::PolicyFile);
    require(file.open(QIODevice::ReadOnly), "no file");
    require(file.readAll().contains('\n' + key + (value ? "=true\n" : "=false\n")), "odd file");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    static int argc = 1;
    static char name[] = "fuzz-values";
    static char *argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    qInstallMessageHandler(ignoreMessage);
    setting = new Setting;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    Choices choices(data, size);
    const QByteArray key = choices.among(Keys);
    const QByteArray signature = RandomValue::signature(choices);
    std::vector<Message> replies;

    Message before = setting->peer.call(Service, Object, Interface, "SetKeyValue");
    // Structures are equal to nothing, not even to each other: both writes are changes.
    require(sd_bus_message_append(before.get(), "sv", key.constData(), "(b)", 1) >= 0, "structure");
    require(isTrue(exchange(before, key, replies).at(0)), "a structure is refused");
    setting->peer.waitFor([] { return !setting->events.isEmpty(); }, "the event before");
    setting->events.clear();
    setting->announcements.clear();

    const Message written = change(key, signature, choices);
    const QList<sd_bus_message *> answers = exchange(written, key, replies);
    const bool isAccepted = isTrue(answers.at(0));
    enterValue(written.get(), true, signature);
    const QByteArray expected = RandomValue::describe(written.get());
    require(isAccepted != isEmptySignature(expected), "a value is refused, or a bad one taken");
    if (!isAccepted) {
        checkNoEffects(answers.at(1));
        return 0;
    }
    enterValue(answers.at(1), false, signature);
    require(RandomValue::describe(answers.at(1)) == expected, "a value has changed");
    enterValue(written.get(), true, signature);
    checkEffects(key, reading(written.get()));
    return 0;
}
