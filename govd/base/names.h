// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_NAMES_H
#define GOVD_BASE_NAMES_H

#include <QString>

/// Names of what is outside the daemon: services, files, user groups, key-file groups. A name that
/// only one handler uses stands in that handler.
///
/// The constants are inline, so that they are initialised before all static objects defined below
/// this header, such as the dispatch tables, which are built from them.
namespace Names {

/// Makes a constant of a Latin-1 text. noexcept, because nothing could handle an exception before
/// main(): without memory the start ends. Not inlined, because each file that includes this header
/// calls it for every constant.
Q_NEVER_INLINE inline QString text(const char *latin1) noexcept
{
    return QString::fromLatin1(latin1);
}

/// An object of a service on the system bus, and the interface that the daemon calls.
struct RemoteObject
{
    QString service;
    QString path;
    QString interface;
};

// The daemon on the bus
inline const QString Service = text("org.kvt.PolicyManager");
inline const QString ObjectPath = text("/org/kvt/PolicyManager");

// Configuration
inline const QString PolicyFile = text("/etc/policy/policy.conf");
inline const QString PolicyDirectory = text("/etc/policy/policy.d/");
inline const QString SwitchFile = text("/etc/policy/switch.conf");
inline const QString SwitchDirectory = text("/etc/policy/switch.d/");
inline const QString ConfigurationGroup = text("policy");

// Plugins
inline const QString AccessSwitchPlugin =
    text("/usr/lib64/libpellorapolicy/plugin/libpelloraswitchplugin.so");
inline const QString SourceRestrictionDirectory = text("/govd/");
inline const QString PluginConditionDirectory = text("/run/govd");

// Who may change a value
inline const QString PrivilegedGroup = text("privileged");
inline const QString RootUser = text("root");
inline constexpr char ManagementGroup[] = "pellora-mdm";

// Marker files
inline const QString CameraMarker = text("/var/lib/govd/camera_enabled");
inline const QString UserReportMarker = text("/var/lib/govd/user_report_enabled");
inline const QString DeveloperShellDirectory = text("/var/lib/devel-su/");
inline const QString DeveloperShellMarker = text("/var/lib/devel-su/.disable");

// Applications
inline const QString CameraLockScreenApplication = text("org.kvt.cameralockscreen");
inline const QString CameraApplication = text("org.kvt.camera");
inline const QString BrowserApplication = text("org.kvt.browserstandalone");
inline const QString WebApplication = text("org.kvt.browserpwa");
inline const QString MessagesApplication = text("org.kvt.messages");
inline const QString VoiceCallApplication = text("voicecall-ui");

// Services
inline const RemoteObject BusDaemon{text("org.freedesktop.DBus"), text("/org/freedesktop/DBus"),
                                    text("org.freedesktop.DBus")};
inline const QString Properties = text("org.freedesktop.DBus.Properties");

inline const RemoteObject SystemLogs{text("org.kvtlabs.SystemLogs"),
                                     text("/org/kvtlabs/SystemLogs"),
                                     text("org.kvtlabs.SystemLogs")};

inline const QString DeviceFeatures = text("org.kvt.deviceinfo.Features");
inline const RemoteObject DeviceFeatureProperties{text("org.kvt.deviceinfo"),
                                                  text("/org/kvt/deviceinfo/Features"), Properties};

inline const RemoteObject RuntimeManager{text("org.kvt.RuntimeManager"),
                                         text("/org/kvt/RuntimeManager/Control1"),
                                         text("org.kvt.RuntimeManager.Control1")};

inline const QString UsbManager = text("org.brinos.DeviceSentry1.UsbManager");
inline const RemoteObject UsbManagerProperties{text("org.brinos.DeviceSentry1"),
                                               text("/org/brinos/DeviceSentry1/Usb"), Properties};

inline const RemoteObject DeveloperMode{text("org.kvt.developermode"), text("/"),
                                        text("org.kvt.developermode")};

inline const RemoteObject WifiTechnology{text("net.connman"), text("/net/connman/technology/wifi"),
                                         text("net.connman.Technology")};

inline const RemoteObject AudioPolicy{text("org.freedesktop.ohm.mdm"),
                                      text("/org/freedesktop/ohm/mdm"),
                                      text("org.freedesktop.ohm.mdm")};

inline const RemoteObject UsbModes{text("com.meego.usb_moded"), text("/com/meego/usb_moded"),
                                   text("com.meego.usb_moded")};

inline const RemoteObject ApplicationSandbox{text("org.pelloraos.appjaild1"),
                                             text("/org/pelloraos/appjaild1"),
                                             text("org.pelloraos.appjaild1")};

} // namespace Names

#endif
