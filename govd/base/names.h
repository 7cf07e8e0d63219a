// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_NAMES_H
#define GOVD_BASE_NAMES_H

#include <QString>

/// The names by which the daemon knows the world outside: services, files, user groups, key-file
/// groups. What only one handler says to its service stands in that handler.
///
/// The constants are inline, so that in each file they are built before everything that follows
/// and uses them, the static dispatch tables included.
namespace Names {

/// An object of a service on the system bus, and the interface of it that is spoken to.
struct RemoteObject
{
    QString service;
    QString path;
    QString interface;
};

// NOLINTBEGIN(cert-err58-cpp): built before main, of the program's own data; nothing can fail
// The daemon on the bus
inline const QString Service = QStringLiteral("org.kvt.PolicyManager");
inline const QString ObjectPath = QStringLiteral("/org/kvt/PolicyManager");

// Configuration
inline const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
inline const QString PolicyDirectory = QStringLiteral("/etc/policy/policy.d/");
inline const QString SwitchFile = QStringLiteral("/etc/policy/switch.conf");
inline const QString SwitchDirectory = QStringLiteral("/etc/policy/switch.d/");
inline const QString ConfigurationGroup = QStringLiteral("policy");

// Plugins
inline const QString AccessSwitchPlugin =
    QStringLiteral("/usr/lib64/libpellorapolicy/plugin/libpelloraswitchplugin.so");
inline const QString SourceRestrictionDirectory = QStringLiteral("/govd/");
inline const QString PluginConditionDirectory = QStringLiteral("/run/govd");

// Who may change a value
inline const QString PrivilegedGroup = QStringLiteral("privileged");
inline const QString RootUser = QStringLiteral("root");
inline constexpr char ManagementGroup[] = "pellora-mdm";

// Marker files
inline const QString CameraMarker = QStringLiteral("/var/lib/govd/camera_enabled");
inline const QString UserReportMarker = QStringLiteral("/var/lib/govd/user_report_enabled");
inline const QString DeveloperShellDirectory = QStringLiteral("/var/lib/devel-su/");
inline const QString DeveloperShellMarker = QStringLiteral("/var/lib/devel-su/.disable");

// Applications
inline const QString CameraLockScreenApplication = QStringLiteral("org.kvt.cameralockscreen");
inline const QString CameraApplication = QStringLiteral("org.kvt.camera");
inline const QString BrowserApplication = QStringLiteral("org.kvt.browserstandalone");
inline const QString WebApplication = QStringLiteral("org.kvt.browserpwa");
inline const QString MessagesApplication = QStringLiteral("org.kvt.messages");
inline const QString VoiceCallApplication = QStringLiteral("voicecall-ui");

// Neighbours on the bus
inline const RemoteObject BusDaemon{QStringLiteral("org.freedesktop.DBus"),
                                    QStringLiteral("/org/freedesktop/DBus"),
                                    QStringLiteral("org.freedesktop.DBus")};
inline const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");

inline const RemoteObject SystemLogs{QStringLiteral("org.kvtlabs.SystemLogs"),
                                     QStringLiteral("/org/kvtlabs/SystemLogs"),
                                     QStringLiteral("org.kvtlabs.SystemLogs")};

inline const QString DeviceFeatures = QStringLiteral("org.kvt.deviceinfo.Features");
inline const RemoteObject DeviceFeatureProperties{QStringLiteral("org.kvt.deviceinfo"),
                                                  QStringLiteral("/org/kvt/deviceinfo/Features"),
                                                  Properties};

inline const RemoteObject RuntimeManager{QStringLiteral("org.kvt.RuntimeManager"),
                                         QStringLiteral("/org/kvt/RuntimeManager/Control1"),
                                         QStringLiteral("org.kvt.RuntimeManager.Control1")};

inline const QString UsbManager = QStringLiteral("org.brinos.DeviceSentry1.UsbManager");
inline const RemoteObject UsbManagerProperties{QStringLiteral("org.brinos.DeviceSentry1"),
                                               QStringLiteral("/org/brinos/DeviceSentry1/Usb"),
                                               Properties};

inline const RemoteObject DeveloperMode{QStringLiteral("org.kvt.developermode"),
                                        QStringLiteral("/"),
                                        QStringLiteral("org.kvt.developermode")};

inline const RemoteObject WifiTechnology{QStringLiteral("net.connman"),
                                         QStringLiteral("/net/connman/technology/wifi"),
                                         QStringLiteral("net.connman.Technology")};

inline const RemoteObject AudioPolicy{QStringLiteral("org.freedesktop.ohm.mdm"),
                                      QStringLiteral("/org/freedesktop/ohm/mdm"),
                                      QStringLiteral("org.freedesktop.ohm.mdm")};

inline const RemoteObject UsbModes{QStringLiteral("com.meego.usb_moded"),
                                   QStringLiteral("/com/meego/usb_moded"),
                                   QStringLiteral("com.meego.usb_moded")};

inline const RemoteObject ApplicationSandbox{QStringLiteral("org.pelloraos.appjaild1"),
                                             QStringLiteral("/org/pelloraos/appjaild1"),
                                             QStringLiteral("org.pelloraos.appjaild1")};
// NOLINTEND(cert-err58-cpp)

} // namespace Names

#endif
