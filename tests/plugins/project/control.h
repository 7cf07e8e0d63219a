// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef CONTROL_H
#define CONTROL_H

#include <QFile>
#include <QJsonObject>
#include <QObject>
#include <QString>

/// The control of a plugin by a test: a file with its state, a file that lists its calls, and a
/// pipe for orders. They are named after the plugin's own file.
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
    /// An order of the test, which has been carried out when this returns.
    void ordered(const QJsonObject &order);

private:
    void obey();

    QString m_base;
    QFile m_orders;
};

#endif
