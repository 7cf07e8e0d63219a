// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/storagestack.h"

#include "support/files.h"
#include "support/loopdevice.h"
#include "support/waiting.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QDir>
#include <QFileInfo>

namespace Support {

namespace {

const QString Service = QStringLiteral("org.freedesktop.UDisks2");
const QString Filesystem = QStringLiteral("org.freedesktop.UDisks2.Filesystem");

/// Distributions differ in where they keep programs that nobody calls by hand.
QString firstExisting(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (QFileInfo::exists(path))
            return path;
    }
    return QString();
}

void writeRules()
{
    for (const char *directory : {"/usr/lib/udev/rules.d", "/usr/local/lib/udev/rules.d",
                                  "/etc/udev/rules.d", "/run/udev/rules.d"})
        QDir(QString::fromLatin1(directory)).removeRecursively();
    const QString rule = QStringLiteral("SUBSYSTEM==\"block\", ATTRS{loop/backing_file}==\"%1\","
                                        " IMPORT{builtin}=\"blkid\", ENV{UDISKS_SYSTEM}=\"%2\"\n");
    const QString lower = rule.arg(LoopDevice::backingFile(), QStringLiteral("0"));
    const QString upper = rule.arg(QStringLiteral("/dev/loop*"), QStringLiteral("1"));
    Files::write(QStringLiteral("/run/udev/rules.d/50-govd-test.rules"), (lower + upper).toUtf8());
}

void end(QProcess &process)
{
    process.terminate();
    if (!process.waitForFinished())
        process.kill();
    process.waitForFinished();
}

} // namespace

StorageStack::StorageStack()
{
    for (QProcess *process : {&m_deviceManager, &m_storageService}) {
        process->setProcessChannelMode(QProcess::MergedChannels);
        QObject::connect(process, &QProcess::readyRead,
                         [this, process] { m_log += process->readAll(); });
    }
    if (startDeviceManager())
        startStorageService();
}

StorageStack::~StorageStack()
{
    end(m_storageService);
    end(m_deviceManager);
}

bool StorageStack::waitForFileSystem(const QString &path, bool isThere)
{
    return waitFor(
        [&] { return (mountPoints(path).type() == QDBusMessage::ReplyMessage) == isThere; });
}

bool StorageStack::waitForMounted(const QString &path, bool isMounted)
{
    return waitFor([&] {
        const QDBusMessage reply = mountPoints(path);
        if (reply.type() != QDBusMessage::ReplyMessage)
            return false;
        const QVariant value = reply.arguments().value(0).value<QDBusVariant>().variant();
        return qdbus_cast<QList<QByteArray>>(value).isEmpty() != isMounted;
    });
}

bool StorageStack::killStorageService()
{
    m_storageService.kill();
    return m_storageService.waitForFinished() && m_bus.waitForNoOwner(Service);
}

bool StorageStack::mount(const QString &path)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(Service, path, Filesystem, QStringLiteral("Mount"));
    call.setArguments({QVariantMap()});
    return m_bus.call(call).type() == QDBusMessage::ReplyMessage;
}

bool StorageStack::startDeviceManager()
{
    const QString program = firstExisting({QStringLiteral("/usr/lib/systemd/systemd-udevd"),
                                           QStringLiteral("/lib/systemd/systemd-udevd"),
                                           QStringLiteral("/sbin/udevd")});
    if (program.isEmpty())
        return fail(QStringLiteral("the device manager (package udev) is not installed"));
    writeRules();
    m_deviceManager.start(program, QStringList());
    const bool answers = waitFor([] {
        return QFileInfo::exists(QStringLiteral("/run/udev/control"))
            && QProcess::execute(QStringLiteral("udevadm"),
                                 {QStringLiteral("control"), QStringLiteral("--ping")})
            == 0;
    });
    return answers || fail(QStringLiteral("the device manager %1 does not start").arg(program));
}

bool StorageStack::startStorageService()
{
    const QString program = firstExisting({QStringLiteral("/usr/libexec/udisks2/udisksd"),
                                           QStringLiteral("/usr/lib/udisks2/udisksd")});
    if (program.isEmpty())
        return fail(QStringLiteral("UDisks2 (package udisks2) is not installed"));
    m_storageService.start(program, QStringList());
    return m_bus.waitForOwner(Service) || fail(QStringLiteral("%1 does not start").arg(program));
}

bool StorageStack::fail(const QString &what)
{
    m_failure = what;
    return false;
}

QDBusMessage StorageStack::mountPoints(const QString &path)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        Service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call.setArguments({Filesystem, QStringLiteral("MountPoints")});
    return m_bus.call(call);
}

} // namespace Support
