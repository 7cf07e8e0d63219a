// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_APPLICATIONS_H
#define GOVD_SIMULATOR_PROGRAM_APPLICATIONS_H

#include <QStringList>

namespace Simulator {

/// The applications that are installed on the device, by their words: what stands behind the last
/// dot of their identifiers.
QStringList applicationWords();

/// The identifier of an application; empty when no application has this word.
QString applicationIdentifier(const QString &word);

/// The word of an application: of one that is not installed, its identifier.
QString applicationWord(const QString &identifier);

} // namespace Simulator

#endif
