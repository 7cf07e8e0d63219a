// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/govctl.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

namespace {

const QString Radio = QStringLiteral("radio");
const QString Spy = QStringLiteral("spy");
constexpr int Camera = 1;
constexpr int Wlan = 4;
constexpr int Microphone = 20;

} // namespace

/// The verbs for access switches, and what switches do to policies, against the real daemon.
class TestGovctlSwitches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void withoutAPluginThereAreNone();
    void listShowsSwitchesInOrder();
    void getPrintsTheValue();
    void unknownSwitchGetsTheNearest();
    void setTellsWhichPoliciesChanged();
    void setTellsThatNothingChanged();
    void setIsRefusedByThePlugin();
    void setIsNotForEverybody();
    void switchExplainsAPolicy();
    void policyUnderASwitchCanBeSet();
    void strangeNamesSurvive();
};

void TestGovctlSwitches::init()
{
    Files::reset();
}

void TestGovctlSwitches::withoutAPluginThereAreNone()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome list = govctl.run(QStringLiteral("switch list"));
    QCOMPARE(list.code, 0);
    QCOMPARE(list.out, QString());
    const Outcome get = govctl.run(QStringLiteral("switch get radio"));
    QCOMPARE(get.code, 2);
    QVERIFY(get.err.contains(QStringLiteral("no access switches")));
}

void TestGovctlSwitches::listShowsSwitchesInOrder()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Spy, {Camera, Microphone, 999}, true);
    plugin.setSwitch(Radio, {Wlan}, false);
    plugin.setSwitch(QStringLiteral("idle"), {}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    QCOMPARE(govctl.run(QStringLiteral("switch list")).out,
             QStringLiteral("\"idle\"  on  governs nothing\n"
                            "\"radio\"  off  WlanEnabled\n"
                            "\"spy\"  on  CameraEnabled, MicrophoneEnabled, 999\n"));
    QCOMPARE(govctl.run(QStringLiteral("switch list --keys")).out,
             QStringLiteral("idle\nradio\nspy\n"));

    const QJsonArray switches = govctl.run(QStringLiteral("switch list --json"))
                                    .result()
                                    .value(QStringLiteral("switches"))
                                    .toArray();
    QCOMPARE(switches.size(), 3);
    QCOMPARE(switches[1].toObject().value(QStringLiteral("key")), QJsonValue(Radio));
    QCOMPARE(switches[1].toObject().value(QStringLiteral("value")), QJsonValue(false));
    QCOMPARE(govctl.run(QStringLiteral("switch list --keys --json"))
                 .result()
                 .value(QStringLiteral("keys"))
                 .toArray()
                 .size(),
             3);
}

void TestGovctlSwitches::getPrintsTheValue()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Radio, {Wlan}, false);
    plugin.setSwitch(Spy, {Camera}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome off = govctl.run(QStringLiteral("switch get radio"));
    QCOMPARE(off.out, QStringLiteral("off\n"));
    QCOMPARE(off.code, 0);
    QCOMPARE(govctl.run(QStringLiteral("switch get spy")).out, QStringLiteral("on\n"));
    QCOMPARE(govctl.run(QStringLiteral("switch get -q radio")).code, 1);
    QCOMPARE(govctl.run(QStringLiteral("switch get -q spy")).code, 0);
    QCOMPARE(govctl.run(QStringLiteral("switch get --json radio"))
                 .result()
                 .value(QStringLiteral("value")),
             QJsonValue(false));
}

void TestGovctlSwitches::unknownSwitchGetsTheNearest()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Radio, {Wlan}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    for (const QString &verb :
         {QStringLiteral("switch get rado"), QStringLiteral("switch set rado on")}) {
        const Outcome unknown = govctl.run(verb);
        QCOMPARE(unknown.code, 2);
        QCOMPARE(unknown.err,
                 QStringLiteral("govctl: unknown switch \"rado\"; did you mean radio?\n"));
        const Outcome json = govctl.run(verb + QStringLiteral(" --json"));
        QCOMPARE(json.error(), QStringLiteral("unknown-switch"));
    }
    QCOMPARE(govctl.run(QStringLiteral("switch get xyz")).err,
             QStringLiteral("govctl: unknown switch \"xyz\"; \"govctl switch list --keys\" names "
                            "them\n"));
    QCOMPARE(plugin.calls().filter(QStringLiteral("setKeyValue")), QStringList());
}

void TestGovctlSwitches::setTellsWhichPoliciesChanged()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Spy, {Camera, Microphone}, true);
    Files::write(QStringLiteral("/etc/policy/policy.conf"), "[policy]\nMicrophoneEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("switch set spy off"));
    QCOMPARE(text.code, 0);
    QCOMPARE(text.out, QStringLiteral("switch \"spy\": on -> off\n  CameraEnabled: on -> off\n"));
    QCOMPARE(plugin.value(Spy), QJsonValue(false));

    const QJsonObject result = govctl.run(QStringLiteral("switch set spy on --json")).result();
    QCOMPARE(result.value(QStringLiteral("before")), QJsonValue(false));
    QCOMPARE(result.value(QStringLiteral("value")), QJsonValue(true));
    QCOMPARE(result.value(QStringLiteral("changed")), QJsonValue(true));
    QCOMPARE(result.value(QStringLiteral("policies")).toArray().size(), 1);
}

void TestGovctlSwitches::setTellsThatNothingChanged()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Spy, {Camera}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("switch set spy yes"));
    QCOMPARE(text.code, 0);
    QCOMPARE(text.out,
             QStringLiteral("switch \"spy\" is on already; it was saved and recorded again\n"));
}

void TestGovctlSwitches::setIsRefusedByThePlugin()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Spy, {Camera}, true);
    plugin.setEntry(Spy, QStringLiteral("result"), 3);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome refused = govctl.run(QStringLiteral("switch set spy off"));
    QCOMPARE(refused.code, 3);
    QVERIFY(refused.err.contains(QStringLiteral("its plugin did not take the value")));
    QCOMPARE(govctl.run(QStringLiteral("switch set spy off --json")).error(),
             QStringLiteral("refused"));
}

void TestGovctlSwitches::setIsNotForEverybody()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Spy, {Camera}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl guest(Identity::of("guest"));
    QCOMPARE(guest.run(QStringLiteral("switch set spy off")).code, 4);
    QCOMPARE(guest.run(QStringLiteral("switch get spy")).out, QStringLiteral("on\n"));
}

void TestGovctlSwitches::switchExplainsAPolicy()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Spy, {Camera}, false);
    plugin.setSwitch(Radio, {Camera, Wlan}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const QString text = govctl.run(QStringLiteral("explain CameraEnabled")).out;
    QVERIFY(text.startsWith(QStringLiteral("CameraEnabled reads off\n")));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("why +switch \"spy\" is off\n"))));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("stored +on\n"))));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("switch +\"radio\" on\n"))));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("switch +\"spy\" off\n"))));

    const Outcome list = govctl.run(QStringLiteral("list --off"));
    QVERIFY(list.out.contains(
        QRegularExpression(QStringLiteral("CameraEnabled +off +switch \"spy\" is off\n"))));
    const QJsonObject policy = govctl.run(QStringLiteral("explain CameraEnabled --json"))
                                   .result()
                                   .value(QStringLiteral("policy"))
                                   .toObject();
    QCOMPARE(policy.value(QStringLiteral("reason")), QJsonValue(QStringLiteral("switch")));
    QCOMPARE(policy.value(QStringLiteral("switches")).toArray().size(), 2);
    QCOMPARE(govctl.run(QStringLiteral("status")).code, 0);
}

void TestGovctlSwitches::policyUnderASwitchCanBeSet()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Spy, {Camera}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const QString still = QStringLiteral(
        "CameraEnabled still reads off, because switch \"spy\" is off; stored is %1");
    const Outcome same = govctl.run(QStringLiteral("set CameraEnabled on"));
    QCOMPARE(same.code, 0);
    QCOMPARE(same.lines().first(), still.arg(QStringLiteral("on already, and was saved again")));
    const Outcome other = govctl.run(QStringLiteral("set CameraEnabled off"));
    QCOMPARE(other.code, 0);
    QCOMPARE(other.lines().first(), still.arg(QStringLiteral("now off")));
    const QJsonObject again = govctl.run(QStringLiteral("set CameraEnabled off --json")).result();
    QCOMPARE(again.value(QStringLiteral("changed")), QJsonValue(false));
    const QJsonObject on = govctl.run(QStringLiteral("set CameraEnabled on --json")).result();
    QCOMPARE(on.value(QStringLiteral("changed")), QJsonValue(true));
}

/// Keys of switches are the plugin's own: they can hold anything.
void TestGovctlSwitches::strangeNamesSurvive()
{
    const QString umlaut = QString::fromUtf8("Schalter f\xc3\xbcr WLAN");
    const QString nasty = QStringLiteral("a\nb\033[31m");
    SwitchPlugin plugin;
    plugin.setSwitch(umlaut, {Wlan}, false);
    plugin.setSwitch(nasty, {Camera}, true);
    Daemon daemon;
    QVERIFY(daemon.start());

    Govctl govctl;
    govctl.setEnvironment(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    QCOMPARE(govctl.run({QStringLiteral("switch"), QStringLiteral("get"), umlaut}).out,
             QStringLiteral("off\n"));
    const Outcome list = govctl.run(QStringLiteral("switch list --keys"));
    QCOMPARE(list.lines(), (QStringList{umlaut, QStringLiteral("a\\u000ab\\u001b[31m")}));
    const Outcome json = govctl.run(
        {QStringLiteral("switch"), QStringLiteral("get"), QStringLiteral("--json"), nasty});
    QCOMPARE(json.result().value(QStringLiteral("key")), QJsonValue(nasty));
}

QTEST_GUILESS_MAIN(TestGovctlSwitches)
#include "tst_govctlswitches.moc"
