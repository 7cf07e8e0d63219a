// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_FAULT_H
#define GOVD_SIMULATOR_FAULT_H

#include <QVariantList>

namespace Simulator {

/// What goes wrong with a call. A call that gets an answer of its own kind is carried out; one
/// that ends in an error, silence or death changes nothing.
struct Fault
{
    enum Kind {
        None,
        Error, ///< answers with a D-Bus error
        WrongAnswer, ///< answers with other values than the caller expects
        Silence, ///< never answers
        Death, ///< drops the bus connection instead of answering
    };

    static Fault error(const QString &name = QStringLiteral("org.freedesktop.DBus.Error.Failed"),
                       const QString &text = QStringLiteral("Failed on purpose"))
    {
        return {Error, 0, name, text, {}};
    }
    static Fault wrongAnswer(const QVariantList &answer)
    {
        return {WrongAnswer, 0, {}, {}, answer};
    }
    static Fault silence() { return {Silence, 0, {}, {}, {}}; }
    static Fault death() { return {Death, 0, {}, {}, {}}; }

    /// The right answer, after @p delay milliseconds.
    static Fault late(int delay) { return {None, delay, {}, {}, {}}; }

    Kind kind = None;
    int delay = 0; ///< milliseconds between the call and its answer
    QString errorName;
    QString errorText;
    QVariantList answer;
};

} // namespace Simulator

#endif
