// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_RESULT_H
#define GOVCTL_RESULT_H

#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <variant>

/// The exit codes. Scripts rely on the numbers.
enum class ExitCode : int {
    Done = 0, ///< done, or there was nothing to do
    No = 1, ///< a question was asked, and the answer is no
    Usage = 2, ///< wrong command line, unknown policy or unknown switch
    Refused = 3, ///< the daemon refused: a lock, or a value that it could not save
    NotAllowed = 4, ///< this user may not change anything
    NoDaemon = 5, ///< no bus, no daemon, or something else under its name
    NoAnswer = 6, ///< no answer in time
    NoOutput = 7, ///< the result could not be written
    NotInForce = 8, ///< changed, but not in force on the device
};

/// The reason why a verb failed.
struct Failure
{
    ExitCode code;
    QString name; ///< for programs; listed in the schema of the output
    QString message; ///< one line for people, with what they can do
    QStringList nearest; ///< known names that look like the unknown one
};

/// The failure, or nothing on success.
using Outcome = std::optional<Failure>;

/// A value, or the failure to get it.
template <typename Value> class Result
{
public:
    // Both are implicit, so that a function can return either.
    Result(Value value)
        : m_content(std::move(value))
    {
    }
    Result(Failure failure)
        : m_content(std::move(failure))
    {
    }

    explicit operator bool() const { return std::holds_alternative<Value>(m_content); }
    const Value &operator*() const { return std::get<Value>(m_content); }
    const Value *operator->() const { return &std::get<Value>(m_content); }
    const Failure &failure() const { return std::get<Failure>(m_content); }

private:
    std::variant<Value, Failure> m_content;
};

#endif
