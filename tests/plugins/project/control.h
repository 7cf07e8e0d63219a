// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef CONTROL_H
#define CONTROL_H

#include <QFile>
#include <QJsonObject>
#include <QObject>
#include <QString>

/// The strings on which a test moves a plugin: a state to act on, a list of calls to note down, and
/// a pipe for orders. Their files bear the name of the plugin's own file.
class Control : public QObject
{
    Q_OBJECT

public:
    Control();

    /// The state as the test has written it last.
    QJsonObject state() const;
    void setState(const QJsonObject &state);

    void note(const QString &call);

Q_SIGNALS:
    /// The test orders something, which has happened when this returns.
    void ordered(const QJsonObject &order);

private:
    void obey();

    QString m_base;
    QFile m_orders;
};

#endif
