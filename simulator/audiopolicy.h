// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_AUDIOPOLICY_H
#define GOVD_SIMULATOR_AUDIOPOLICY_H

#include "simulator/service.h"

namespace Simulator {

/// Opens and closes the microphone: the audio-policy service.
class AudioPolicy : public Service
{
    Q_OBJECT

public:
    AudioPolicy();

    bool isMicrophoneEnabled() const { return m_isMicrophoneEnabled; }

private:
    Reply set(const QString &item, const QString &value);

    bool m_isMicrophoneEnabled = true;
};

} // namespace Simulator

#endif
