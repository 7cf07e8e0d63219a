// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_INTERFACE_H
#define GOVD_SIMULATOR_INTERFACE_H

#include "simulator/call.h"

#include <QVector>

#include <functional>

namespace Simulator {

/// What a service answers to a call: values, or an error when it has a name.
struct Reply
{
    QVariantList values;
    QString errorName;
    QString errorText;

    static Reply of(const QVariantList &values) { return {values, {}, {}}; }
    static Reply failure(const QString &name, const QString &text) { return {{}, name, text}; }

    /// The error of the bus for arguments that a service does not take.
    static Reply invalidArguments(const QString &text)
    {
        return failure(QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"), text);
    }

    bool isError() const { return !errorName.isEmpty(); }
};

/// One method of an interface. It is run only with arguments of its types.
struct Method
{
    QString name;
    QString in; ///< D-Bus types of the arguments
    QString out; ///< D-Bus types of the answer
    std::function<Reply(const Call &)> run;
};

/// One property of an interface; read-only without a function that writes it.
struct Property
{
    QString name;
    QString type; ///< D-Bus type
    std::function<QVariant()> read;
    std::function<Reply(const QVariant &)> write;
};

/// One signal of an interface.
struct Signal
{
    QString name;
    QString types; ///< D-Bus types of what it carries
};

/// An interface of an object, described row by row.
struct Interface
{
    QString name;
    QVector<Method> methods;
    QVector<Property> properties;
    QVector<Signal> signalRows;
};

} // namespace Simulator

#endif
