// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_BOOTED_WIRE_H
#define GOVD_TESTS_BOOTED_WIRE_H

#include <QByteArray>

/// The bus's own protocol, as far as it takes to send a call without a bus library: everything that
/// a client says can be ready before it connects, and a call can be made that no library makes.
namespace Wire {

/// A method call of the daemon's object with up to one string and one boolean in a variant.
struct Call
{
    QByteArray interface; ///< may be empty: the bus allows a call without one
    QByteArray member;
    QByteArray key; ///< empty for a call without arguments
    bool hasValue = false; ///< a false travels behind the key
};

enum class Answer { None, Good, RefusedByBus, RefusedByDaemon, OtherError };

/// All that a client of the user @p user says to the bus to log in and make one call.
QByteArray conversation(unsigned user, const Call &call);

/// What @p bytes, all that the bus has said so far, tell about that call.
Answer answerIn(const QByteArray &bytes);

/// Whether the bus has taken the client in, according to @p bytes.
bool isWelcomeIn(const QByteArray &bytes);

} // namespace Wire

#endif
