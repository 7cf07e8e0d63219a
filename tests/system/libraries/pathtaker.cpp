// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QDBusConnection>

#include <govd/sourcerestriction.h>

/// A source restriction that locks nothing, but registers an object at the daemon's object path.
class PathTaker : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    PathTaker()
    {
        QDBusConnection::systemBus().registerObject(QStringLiteral("/org/kvt/PolicyManager"), this);
    }

    QString name() override { return QStringLiteral("pathtaker"); }
    bool policyIsLocked(const QString &) override { return false; }
    QStringList supportedPolicies() override { return {}; }
};

#include "pathtaker.moc"
