// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/names.h"
#include "daemon/keyfile.h"
#include "daemon/policymanager.h"
#include "daemon/policytypes.h"

#include <QDir>

namespace {

/// The files to read: the single file alone if it exists, otherwise every entry of the directory,
/// sorted by name without regard to case. The directory is a seed for the file, never merged.
QStringList configurationFiles(const QString &file, const QString &directory)
{
    if (KeyFile::exists(file))
        return {file};
    QStringList entries;
    const QFileInfoList listing = QDir(directory).entryInfoList();
    for (const QFileInfo &entry : listing)
        entries.append(entry.absoluteFilePath());
    return entries;
}

} // namespace

void PolicyManager::readConfiguration()
{
    if (switchPlugin()) { // without it nobody could keep the values
        const QStringList switchFiles =
            configurationFiles(Names::SwitchFile, Names::SwitchDirectory);
        for (const QString &path : switchFiles)
            readSwitchFile(path);
    }
    const QStringList policyFiles = configurationFiles(Names::PolicyFile, Names::PolicyDirectory);
    for (const QString &path : policyFiles)
        readPolicyFile(path);
}

void PolicyManager::readPolicyFile(const QString &path)
{
    KeyFile file;
    file.load(path); // of a malformed file, what stands before the fault still counts
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
