// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QDebug>
#include <QFile>
#include <QFileSystemWatcher>

#include <govd/sourcerestriction.h>

#include <utility>

namespace {

const QLatin1String Browser("BrowserEnabled");
const QLatin1String Directory("/run/kiosk");
const QLatin1String Marker("/run/kiosk/active");

} // namespace

/// Locks the browser while the file /run/kiosk/active exists. The directory must exist when the
/// daemon starts (kiosk.tmpfiles.conf) and be visible to it (kiosk.service.conf).
class Kiosk : public SourceRestriction
{
    Q_OBJECT
    Q_INTERFACES(SourceRestriction)
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)

public:
    Kiosk()
    {
        connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &Kiosk::update);
        if (!m_watcher.addPath(Directory))
            qWarning() << "kiosk: cannot watch" << Directory << "so nothing will be locked";
        update(); // after addPath(), so that no change in between is missed
    }

    QString name() override { return QStringLiteral("kiosk"); }
    QStringList supportedPolicies() override { return {Browser}; }
    bool policyIsLocked(const QString & /*policy*/) override { return m_isActive; }

private:
    void update()
    {
        const bool wasActive = std::exchange(m_isActive, QFile::exists(Marker));
        if (m_isActive != wasActive)
            Q_EMIT policyIsLockedChanged(Browser, m_isActive);
    }

    QFileSystemWatcher m_watcher;
    bool m_isActive = false;
};

#include "kiosk.moc"
