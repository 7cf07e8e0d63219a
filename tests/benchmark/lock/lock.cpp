// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QMetaEnum>

#include <dlfcn.h>
#include <govd/sourcerestriction.h>
#include <pellorapolicy/policyvalue.h>

/// A lock that covers every policy and locks none. Its name is that of its file, so that each copy
/// is another lock.
class Lock : public SourceRestriction
{
    Q_OBJECT
    Q_INTERFACES(SourceRestriction)
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)

public:
    QString name() override;
    bool policyIsLocked(const QString &) override { return false; }
    QStringList supportedPolicies() override;
};

QString Lock::name()
{
    Dl_info file;
    dladdr(&staticMetaObject, &file);
    return QString::fromLocal8Bit(file.dli_fname);
}

QStringList Lock::supportedPolicies()
{
    const auto types = QMetaEnum::fromType<Pellora::PolicyValue::PolicyType>();
    QStringList policies;
    for (int index = 0; index < types.keyCount(); ++index)
        policies.append(QString::fromLatin1(types.key(index)));
    return policies;
}

#include "lock.moc"
