// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "interruption.h"

#include <array>
#include <csignal>

namespace {

constexpr std::array<int, 3> Signals{SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, Signals.size()> previous;
volatile std::sig_atomic_t come = 0;

void note(int)
{
    come = 1;
}

} // namespace

Interruption::Interruption()
{
    come = 0;
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < Signals.size(); ++i) {
        sigaction(Signals[i], nullptr, &previous[i]);
        if (previous[i].sa_handler != SIG_IGN) // as nohup leaves it
            sigaction(Signals[i], &action, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t i = 0; i < Signals.size(); ++i)
        sigaction(Signals[i], &previous[i], nullptr);
}

bool Interruption::hasCome() const
{
    return come != 0;
}
