// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QCoreApplication>
#include <QFile>
#include <QThread>

#include <govd/sourcerestriction.h>

/// A lock plugin that records its parent and its thread when it is called, and who deletes it. Qt
/// itself deletes the remaining root objects when the process ends.
class Child : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    ~Child() override { note(parent() ? "deleted by its parent" : "deleted by Qt"); }

    QString name() override { return QStringLiteral("child"); }

    QStringList supportedPolicies() override { return {QStringLiteral("CameraEnabled")}; }

    bool policyIsLocked(const QString & /*policy*/) override
    {
        note(parent() ? parent()->metaObject()->className() : "nobody's child");
        note(QThread::currentThread() == qApp->thread() ? "main thread" : "another thread");
        return false;
    }

private:
    static void note(const char *text)
    {
        QFile file(QStringLiteral("/run/govd-test-child"));
        file.open(QIODevice::WriteOnly | QIODevice::Append);
        file.write(QByteArray(text) + '\n');
    }
};

#include "child.moc"
