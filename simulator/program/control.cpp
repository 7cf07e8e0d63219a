// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/control.h"

#include "commandline/text.h"
#include "simulator/program/applications.h"
#include "simulator/program/controlnames.h"

#include <QJsonDocument>

namespace Simulator {
namespace {

Reply unknownService(const QString &word)
{
    return ControlNames::unknown(Text::tr("there is no service %1").arg(quoted(word)));
}

QString text(const Call &call, int index)
{
    return call.arguments.at(index).toString();
}

} // namespace

Control::Control(Device &device)
    : Service(ControlNames::Service)
    , m_device(device)
{
    const Property state{ControlNames::State,
                         QStringLiteral("s"),
                         [this] {
                             return QVariant(QString::fromUtf8(
                                 QJsonDocument(m_device.state()).toJson(QJsonDocument::Compact)));
                         },
                         {}};
    objects().add(ControlNames::Path, {ControlNames::Interface, methods(), {state}, {}});
    connect(&device, &Device::changed, this, [this] {
        sendPropertyChanged(ControlNames::Path, ControlNames::Interface, ControlNames::State);
    });
    connect(this, &Service::called, &device, [this](const Call &call) {
        if (call.interface == ControlNames::Interface)
            m_device.report(QStringLiteral("person"), call);
    });
}

QVector<Method> Control::methods()
{
    const QString one = QStringLiteral("s");
    return {
        {QStringLiteral("Plug"), QStringLiteral("ss"), one,
         [this](const Call &call) {
             return m_device.ports().plug(text(call, 0), text(call, 1));
         }},
        {QStringLiteral("Unplug"), one, one,
         [this](const Call &call) {
             return m_device.ports().unplug(text(call, 0));
         }},
        {QStringLiteral("Launch"),
         one,
         {},
         [this](const Call &call) {
             return launch(text(call, 0));
         }},
        {QStringLiteral("Stop"),
         one,
         {},
         [this](const Call &call) {
             return setPresent(text(call, 0), false);
         }},
        {QStringLiteral("Start"),
         one,
         {},
         [this](const Call &call) {
             return setPresent(text(call, 0), true);
         }},
        {QStringLiteral("Fail"),
         QStringLiteral("ssd"),
         {},
         [this](const Call &call) {
             return fail(text(call, 0), text(call, 1), call.arguments.at(2).toDouble());
         }},
        {QStringLiteral("Heal"),
         one,
         {},
         [this](const Call &call) {
             return fail(text(call, 0), QStringLiteral("none"), 0);
         }},
        {QStringLiteral("SetCertified"),
         QStringLiteral("b"),
         {},
         [this](const Call &call) {
             return setCertified(call.arguments.at(0).toBool());
         }},
    };
}

Reply Control::launch(const QString &application)
{
    const QString identifier = applicationIdentifier(application);
    if (identifier.isEmpty())
        return ControlNames::unknown(
            Text::tr("there is no application %1").arg(quoted(application)));
    m_device.neighbours().runtime.start(identifier);
    return {};
}

Reply Control::setPresent(const QString &word, bool isPresent)
{
    Service *service = m_device.service(word);
    if (!service)
        return unknownService(word);
    if (!isPresent)
        service->leave();
    else if (!service->appear())
        return ControlNames::refused(
            Text::tr("%1 cannot be taken on the bus; end the program that has the name")
                .arg(service->name()));
    return {};
}

Reply Control::fail(const QString &word, const QString &fault, double seconds)
{
    Service *service = m_device.service(word);
    if (!service)
        return unknownService(word);
    // Written so that it also refuses what is no number at all.
    if (!(seconds >= 0 && seconds <= ControlNames::LongestDelay))
        return ControlNames::unknown(
            Text::tr("a delay is %1 seconds at most").arg(ControlNames::LongestDelay));
    if (!m_device.setFault(*service, fault, seconds))
        return ControlNames::unknown(Text::tr("there is no fault %1").arg(quoted(fault)));
    return {};
}

Reply Control::setCertified(bool isCertified)
{
    m_device.neighbours().info.setOsCertified(isCertified);
    return {};
}

} // namespace Simulator
