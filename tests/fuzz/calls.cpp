// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// Calls of every member of the daemon, a real access-switch plugin in it, with arguments of right
// and of wrong types and numbers: what is accepted is found in the daemon, its file, the audit
// event and the announcement, and what is not is found nowhere.
//
// An input is a series of calls: for each the member, 0 for arguments of the types that it takes or
// 1 for others, these with their number and signatures, and the values; a written value has its
// signature before it. See Choices.
#include "names.h"
#include "tests/fuzz/attempt.h"
#include "tests/fuzz/check.h"
#include "tests/fuzz/device.h"
#include "tests/fuzz/model.h"
#include "tests/fuzz/randomvalue.h"
#include "tests/fuzz/reading.h"
#include "tests/fuzz/record.h"

#include <QCoreApplication>
#include <QDir>

#include <sanitizer/lsan_interface.h>

namespace {

constexpr char SwitchList[] = "[camera]\npolicies=CameraEnabled\nvalue=true\n"
                              "[radio]\npolicies=NfcEnabled;BluetoothEnabled\nvalue=true\n";
constexpr int LongestSeries = 8;

const Model::Policy Allowed{"vb<b1 >", true};
// Structures are never equal, not even to each other, so that any value is a change.
const Model::Policy Structure{"v(b)<rb<b1 >>", false};

/// What a call has changed.
enum class Outcome { Nothing, Policy, Switch };

Device *device = nullptr;
Model model;

void installPlugin()
{
    const QFileInfo plugin(Names::AccessSwitchPlugin);
    QDir().mkpath(plugin.path());
    QDir().mkpath(QStringLiteral("/etc/govd"));
    QFile::remove(plugin.filePath());
    QFile list(QStringLiteral("/etc/govd/fileswitch.conf"));
    require(QFile::copy(QStringLiteral(GOVD_FILESWITCH), plugin.filePath())
                && list.open(QIODevice::WriteOnly) && list.write(SwitchList) > 0,
            "the plugin cannot be installed");
}

/// Makes one of the writes that bring the daemon into the same state before each series.
void write(const char *interface, const QByteArray &key, const char *signature)
{
    const Message message = device->call(interface, "SetKeyValue");
    requireDone(sd_bus_message_append(message.get(), "sv", key.constData(), signature, 1), "write");
    require(device->exchange({&message}).front() != nullptr, "no answer to a write");
}

/// What a switch governs begins as allowed, so that a switch that is turned off forbids it.
void beginPolicy(const QByteArray &key)
{
    const Model::Policy &policy = Model::isGoverned(key) ? Allowed : Structure;
    if (model.policyAnswer(key) == policy.value)
        return;
    write("Policy", key, "(b)");
    if (policy.reading)
        write("Policy", key, "b");
    model.setPolicy(key, policy);
}

void begin(const Record &initial)
{
    for (const char *key : {"camera", "radio"}) {
        if (!model.isOn(key))
            write("Switch", key, "b");
        model.setSwitch(key, true);
    }
    for (const QByteArray &key : Attempt::GoodKeys)
        beginPolicy(key);
    initial.restore(Names::PolicyFile);
    device->forget();
}

/// Whether the daemon has to accept a fitting write; nothing when that depends on the key file.
std::optional<bool> acceptance(const Attempt &attempt)
{
    if (attempt.isOfSwitch())
        return model.isSwitch(attempt.key);
    if (Reading::cannotBeHandedOut(attempt.value) || Attempt::BadKeys.contains(attempt.key))
        return false;
    return Attempt::GoodKeys.contains(attempt.key) ? std::optional(true) : std::nullopt;
}

void checkEvent(const Attempt &attempt)
{
    require(device->events().size() == 1, "odd events: " + device->events().join('|'));
    // Place-holders in the key are filled in as well.
    const QByteArray key = attempt.key.contains('%') ? QByteArray() : attempt.key + " changed. Old";
    require(device->events().first().startsWith("Policy " + key), "odd event about " + attempt.key);
}

QByteArray describe(const Message &reply)
{
    return reply ? RandomValue::describe(reply.get()) : "nothing";
}

/// Checks the announcements of an accepted write of a policy, and saves the new stored value.
void followPolicy(const Attempt &attempt)
{
    const std::optional<Model::Policy> before = model.policy(attempt.key);
    // Equal values of different types are no change, but only the daemon knows which are equal.
    const bool mayBeEqual =
        before && before->reading == attempt.reading && before->value != Structure.value;
    if (mayBeEqual && device->announcements().isEmpty())
        return;
    require(device->announcements() == model.policySignals(attempt.key, attempt.reading),
            "odd announcements: " + device->announcements().join('|'));
    model.setPolicy(attempt.key, {attempt.value, attempt.reading});
}

void followSwitch(const Attempt &attempt)
{
    const bool isChange = model.isOn(attempt.key) != attempt.reading;
    const QByteArrayList expected =
        isChange ? model.switchSignals(attempt.key, attempt.reading) : QByteArrayList();
    require(device->announcements() == expected,
            "odd announcements: " + device->announcements().join('|'));
    model.setSwitch(attempt.key, attempt.reading);
}

/// Checks the replies to reads of @p key, after a call about it, against the model.
void checkReadings(const QByteArray &key)
{
    std::vector<Message> questions;
    QByteArrayList expected;
    for (const QByteArray &policy : {key, QByteArray("CameraEnabled"), QByteArray("NfcEnabled")}) {
        if (const std::optional<QByteArray> answer = model.policyAnswer(policy)) {
            questions.push_back(device->question("Policy", policy));
            expected.append(*answer);
        }
    }
    for (const QByteArray &each : {key, QByteArray("camera"), QByteArray("radio")}) {
        questions.push_back(device->question("Switch", each));
        expected.append(model.switchAnswer(each));
    }
    std::vector<const Message *> calls;
    for (const Message &question : questions)
        calls.push_back(&question);
    QByteArrayList found;
    for (const Message &reply : device->exchange(calls))
        found.append(describe(reply));
    require(found == expected, "odd readings: " + found.join('|'));
}

/// Checks the reply to a fitting call that is no write.
void checkAnswer(const Attempt &attempt, const Message &reply)
{
    // The order of switches is not defined.
    static const QByteArray switches = "as<s63616d657261 s726164696f >";
    static const QByteArray others = "as<s726164696f s63616d657261 >";
    const QByteArray answer = describe(reply);
    const QByteArray member = attempt.member.name;
    QByteArray expected;
    if (member == "KeyValue" && attempt.isOfSwitch())
        expected = model.switchAnswer(attempt.key);
    else if (member == "KeyValue")
        expected = *model.policyAnswer(attempt.key);
    else if (member == "KeyPolicyTypes")
        expected = Model::typesAnswer(attempt.key);
    else
        expected = answer == others ? others : switches;
    require(answer == expected, "odd answer to " + member + ": " + answer);
}

bool isAccepted(const Attempt &attempt, const Message &reply)
{
    const QByteArray answer = describe(reply);
    require(answer == "b1 " || answer == "b0 ", "odd answer to a write: " + answer);
    const bool result = answer == "b1 ";
    require(acceptance(attempt).value_or(result) == result,
            "what is bad is taken, or what is good is refused: " + attempt.key);
    return result;
}

Outcome outcomeOf(const Attempt &attempt, const Message &reply)
{
    if (!attempt.isFitting) {
        require(reply && sd_bus_message_is_method_error(reply.get(), SD_BUS_ERROR_UNKNOWN_METHOD),
                "a call with wrong arguments is carried out");
        return Outcome::Nothing;
    }
    if (!attempt.isWrite()) {
        checkAnswer(attempt, reply);
        return Outcome::Nothing;
    }
    if (!isAccepted(attempt, reply))
        return Outcome::Nothing;
    return attempt.isOfSwitch() ? Outcome::Switch : Outcome::Policy;
}

/// Checks @p before against the file as it is now.
void checkFile(const QString &path, const Record &before, const Attempt &attempt, bool isWritten)
{
    const Record now(path);
    require(isWritten ? now.content == before.with(attempt.key, attempt.reading) : now == before,
            "odd file: " + now.content);
}

void checkNews(const Attempt &attempt, Outcome outcome)
{
    switch (outcome) {
    case Outcome::Nothing:
        require(device->events().isEmpty() && device->announcements().isEmpty(),
                "what is not accepted is told to others");
        break;
    case Outcome::Policy:
        checkEvent(attempt);
        followPolicy(attempt);
        break;
    case Outcome::Switch:
        checkEvent(attempt);
        followSwitch(attempt);
        break;
    }
}

/// Whether the daemon will never reply. Such a call is not made: the bus limits the number of calls
/// without a reply.
bool hasNoAnswer(const Attempt &attempt)
{
    const bool isPolicyQuestion = attempt.isFitting && !attempt.isWrite() && !attempt.isOfSwitch();
    return isPolicyQuestion && !model.policyAnswer(attempt.key);
}

/// Makes one call, and checks everything that can be seen of it.
void attemptOne(Choices &choices)
{
    Attempt attempt(*device, choices);
    if (hasNoAnswer(attempt))
        return;
    const Record policies(Names::PolicyFile);
    const Record switches(Names::SwitchFile);
    device->forget();
    const Message last = device->question("Switch", "camera");
    const std::vector<Message> replies = device->exchange({&attempt.message, &last});
    attempt.readValue();
    const Outcome outcome = outcomeOf(attempt, replies.front());
    checkFile(Names::PolicyFile, policies, attempt, outcome == Outcome::Policy);
    checkFile(Names::SwitchFile, switches, attempt, outcome == Outcome::Switch);
    checkNews(attempt, outcome);
    checkReadings(attempt.key);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    qInstallMessageHandler(ignoreMessage);
    installPlugin();
    {
        const __lsan::ScopedDisabler disabler; // the plugin's loader is never freed, by design
        device = new Device;
    }
    for (const QByteArray &key : Attempt::GoodKeys + QList<QByteArray>{"BluetoothEnabled"}) {
        write("Policy", key, "b");
        model.setPolicy(key, Allowed);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    static const Record initial(Names::PolicyFile);
    begin(initial);
    Choices choices(data, size);
    for (int count = 0; count < LongestSeries && !choices.isEnd(); ++count)
        attemptOne(choices);
    return 0;
}
