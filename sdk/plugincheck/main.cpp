// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "plugincheck.h"
#include "report.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace {

constexpr int WrongUsage = 3;
constexpr char Usage[] = "Usage: govd-plugin-check FILE.so\n"
                         "Loads a lock plugin or an access-switch plugin as the daemon would and "
                         "says what is wrong with it.\n";

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 2 && arguments.at(1) == QLatin1String("--help")) {
        (void)std::fputs(Usage, stdout);
        return Report::Sound;
    }
    if (arguments.size() != 2 || arguments.at(1).startsWith(QLatin1Char('-'))) {
        (void)std::fputs(Usage, stderr);
        return WrongUsage;
    }
    Report report(arguments.at(1));
    checkPlugin(arguments.at(1), report);
    return report.grade();
}
