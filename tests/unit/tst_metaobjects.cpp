// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "accessswitchpluginloader.h"
#include "policyadaptor.h"
#include "policymanager.h"
#include "sourcerestriction.h"
#include "switchadaptor.h"

#include <QDBusVariant>
#include <QMetaMethod>
#include <QtTest>

Q_DECLARE_METATYPE(const QMetaObject *)

namespace {

/// The methods that a class adds to its base, in order, each as "kind signature".
QStringList ownMethods(const QMetaObject &meta)
{
    QStringList result;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const QString access =
            method.access() == QMetaMethod::Private ? QStringLiteral("private ") : QString();
        const QString kind = method.methodType() == QMetaMethod::Signal ? QStringLiteral("signal ")
                                                                        : QStringLiteral("slot ");
        result.append(access + kind + QString::fromLatin1(method.typeName()) + QLatin1Char(' ')
                      + QString::fromLatin1(method.methodSignature()));
    }
    return result;
}

} // namespace

/// The members and their order, on which queued calls, the bus and plugin authors rely.
class tst_MetaObjects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void policyManager();
    void adaptors_data();
    void adaptors();
    void enforcer();
    void restrictions();
    void accessSwitches();
};

void tst_MetaObjects::policyManager()
{
    QCOMPARE(ownMethods(PolicyManager::staticMetaObject),
             QStringList({
                 QStringLiteral("signal void policyChanged(QString,QVariant)"),
                 QStringLiteral("signal void switchChanged(QString,QVariant)"),
                 QStringLiteral("slot void updatePolicyValue(QString,QVariant)"),
                 QStringLiteral("slot void enforceSwitchPolicies(QString,QVariant)"),
                 QStringLiteral("private slot void onPolicyIsLockedChanged(QString,bool)"),
             }));
    for (int i = 0; i < 4; ++i) {
        const int index = PolicyManager::staticMetaObject.methodOffset() + i;
        QCOMPARE(PolicyManager::staticMetaObject.method(index).parameterNames(),
                 QList<QByteArray>({"key", "value"}));
    }
}

void tst_MetaObjects::adaptors_data()
{
    QTest::addColumn<const QMetaObject *>("meta");
    QTest::addColumn<QStringList>("methods");
    QTest::newRow("policy") << &PolicyAdaptor::staticMetaObject
                            << QStringList({
                                   QStringLiteral(
                                       "signal void PolicyChanged(QString,QDBusVariant)"),
                                   QStringLiteral("slot QDBusVariant KeyValue(QString)"),
                                   QStringLiteral("slot bool SetKeyValue(QString,QDBusVariant)"),
                               });
    QTest::newRow("switch") << &SwitchAdaptor::staticMetaObject
                            << QStringList({
                                   QStringLiteral(
                                       "signal void SwitchChanged(QString,QDBusVariant)"),
                                   QStringLiteral("slot QDBusVariant KeyValue(QString)"),
                                   QStringLiteral("slot bool SetKeyValue(QString,QDBusVariant)"),
                                   QStringLiteral("slot QList<int> KeyPolicyTypes(QString)"),
                                   QStringLiteral("slot QStringList Keys()"),
                               });
}

void tst_MetaObjects::adaptors()
{
    QFETCH(const QMetaObject *, meta);
    QFETCH(QStringList, methods);
    QCOMPARE(ownMethods(*meta), methods);
    QCOMPARE(meta->classInfoCount() - meta->classInfoOffset(), 2);
    QCOMPARE(meta->superClass()->className(), "QDBusAbstractAdaptor");
}

void tst_MetaObjects::enforcer()
{
    QCOMPARE(ownMethods(PolicyEnforcer::staticMetaObject),
             QStringList({QStringLiteral("slot void applyServicePolicies(QString)")}));
}

void tst_MetaObjects::restrictions()
{
    const QStringList relayed{QStringLiteral("signal void policyIsLockedChanged(QString,bool)")};
    QCOMPARE(ownMethods(PolicyRestriction::staticMetaObject), relayed);
    QCOMPARE(ownMethods(SourceRestriction::staticMetaObject), relayed);

    SourceRestriction source;
    QVERIFY(source.qt_metacast("SourceRestriction"));
    QVERIFY(!source.qt_metacast("org.kvt.sourcerestriction"));
    QCOMPARE(QByteArray(qobject_interface_iid<SourceRestriction *>()),
             QByteArray("org.kvt.sourcerestriction"));
    QVERIFY(source.name().isNull());
    QVERIFY(!source.policyIsLocked(QStringLiteral("CameraEnabled")));
    QVERIFY(source.supportedPolicies().isEmpty());
}

void tst_MetaObjects::accessSwitches()
{
    QCOMPARE(ownMethods(Pellora::AccessSwitchPlugin::staticMetaObject),
             QStringList({QStringLiteral("signal void keyValueChanged(QString,QVariant)")}));
    QCOMPARE(QByteArray(qobject_interface_iid<Pellora::AccessSwitchPlugin *>()),
             QByteArray("org.kvt.brinos.AccessSwitchPlugin/1.0"));
    QCOMPARE(Pellora::AccessSwitchPluginLoader::staticMetaObject.className(),
             "Pellora::AccessSwitchPluginLoader");
    QCOMPARE(ownMethods(Pellora::AccessSwitchPluginLoader::staticMetaObject), QStringList());
    QCOMPARE(Pellora::AccessSwitchPluginLoader::instance(),
             Pellora::AccessSwitchPluginLoader::instance());
}

QTEST_APPLESS_MAIN(tst_MetaObjects)
#include "tst_metaobjects.moc"
