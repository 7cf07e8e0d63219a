// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "deferredsignals.h"
#include "keyfile.h"
#include "names.h"
#include "policymanager.h"
#include "policytypes.h"

#include <QDir>

void PolicyManager::readConfiguration()
{
    if (switchPlugin()) // the values live in the plugin only
        readFiles(Names::SwitchFile, Names::SwitchDirectory, &PolicyManager::readSwitchFile);
    readFiles(Names::PolicyFile, Names::PolicyDirectory, &PolicyManager::readPolicyFile);
}

/// Reads the single file alone if it exists, otherwise every entry of the directory, sorted by name
/// without regard to case. The two are never merged: the first value from the directory is saved,
/// which creates the file.
void PolicyManager::readFiles(const QString &file, const QString &directory, FileReader read)
{
    if (KeyFile::exists(file)) {
        (this->*read)(file);
        return;
    }
    // Later starts read only the file: if a signal ended this one after the first value, the others
    // would be lost.
    const DeferredSignals deferred;
    const QFileInfoList entries = QDir(directory).entryInfoList();
    for (const QFileInfo &entry : entries)
        (this->*read)(entry.absoluteFilePath());
}

void PolicyManager::readPolicyFile(const QString &path)
{
    KeyFile file;
    file.load(path); // of a malformed file, the keys before the fault count
    const QMetaEnum types = PolicyTypes::enumeration();
    for (int i = 0; i < types.keyCount(); ++i) {
        const QString key = QString::fromLatin1(types.key(i));
        if (const std::optional<bool> value = file.boolean(Names::ConfigurationGroup, key))
            setPolicyValue(key, *value, false);
    }
}

void PolicyManager::readSwitchFile(const QString &path)
{
    KeyFile file;
    if (file.load(path))
        return;
    const auto values = file.booleans(Names::ConfigurationGroup);
    for (const auto &[key, value] : values)
        setSwitchValue(key, value);
}
