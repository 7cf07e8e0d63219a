// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_REQUEST_H
#define GOVCTL_REQUEST_H

#include "output.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

struct Verb;

/// What the user asked for: a verb with checked arguments.
struct Request
{
    const Verb *verb = nullptr;
    QStringList arguments;
    QHash<QString, QString> options; ///< by the long name; flags have an empty value
    std::chrono::milliseconds timeout{0};

    bool has(const QString &option) const { return options.contains(option); }
    bool isJson() const { return has(QStringLiteral("json")); }

    /// The argument @p index, of the kind Value.
    bool value(int index) const;
};

namespace Verbs {

ExitCode summary(const Request &request, Output &output);
ExitCode list(const Request &request, Output &output);
ExitCode get(const Request &request, Output &output);
ExitCode set(const Request &request, Output &output);
ExitCode explain(const Request &request, Output &output);
ExitCode verify(const Request &request, Output &output);
ExitCode switchList(const Request &request, Output &output);
ExitCode switchGet(const Request &request, Output &output);
ExitCode switchSet(const Request &request, Output &output);
ExitCode exportState(const Request &request, Output &output);
ExitCode diff(const Request &request, Output &output);
ExitCode apply(const Request &request, Output &output);
ExitCode holds(const Request &request, Output &output);
ExitCode release(const Request &request, Output &output);
ExitCode history(const Request &request, Output &output);
ExitCode undo(const Request &request, Output &output);
ExitCode watch(const Request &request, Output &output);
ExitCode status(const Request &request, Output &output);
ExitCode can(const Request &request, Output &output);
ExitCode dump(const Request &request, Output &output);
ExitCode complete(const Request &request, Output &output);

/// The common part of "get" and "switch get": prints a value, or tells it by the exit code alone.
ExitCode answer(const Request &request, Output &output, std::optional<bool> value);

} // namespace Verbs

#endif
