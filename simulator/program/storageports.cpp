// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/storageports.h"

#include "commandline/text.h"
#include "simulator/program/controlnames.h"

#include <algorithm>
#include <iterator>

namespace Simulator {
namespace {

/// A kind of media: how the storage service shows it.
struct Kind
{
    const char *word;
    const char *connectionBus;
    const char *label;
    const char *drivePrefix;
    const char *partitionSuffix;
};

const Kind Kinds[] = {
    {"usb", "usb", "STICK", "usb", "p1"},
    {"card", "sdio", "CARD", "mmcblk", "p1"},
};

const Kind *findKind(const QString &word)
{
    const auto *found = std::find_if(std::begin(Kinds), std::end(Kinds), [&](const Kind &kind) {
        return word == QLatin1String(kind.word);
    });
    return found == std::end(Kinds) ? nullptr : found;
}

/// Whether a directory can be called after @p label, and a line of text can hold it.
bool isGoodLabel(const QString &label)
{
    return label != QLatin1String(".") && label != QLatin1String("..")
        && !label.contains(QLatin1Char('/')) && printable(label) == label;
}

} // namespace

StoragePorts::StoragePorts(Storage &storage)
    : m_storage(storage)
{
    m_storage.setMountsAtOnce(true);
}

QStringList StoragePorts::kinds()
{
    QStringList words;
    for (const Kind &kind : Kinds)
        words.append(QLatin1String(kind.word));
    return words;
}

Reply StoragePorts::plug(const QString &word, const QString &label)
{
    const Kind *kind = findKind(word);
    if (!kind)
        return ControlNames::unknown(Text::tr("there is no port for %1").arg(quoted(word)));
    if (!isGoodLabel(label))
        return ControlNames::unknown(Text::tr("%1 cannot be a label").arg(quoted(label)));
    if (labels().contains(label))
        return ControlNames::refused(
            Text::tr("%1 is plugged in already; unplug it or choose another label")
                .arg(quoted(label)));

    Drive drive{freeDrive(word)};
    drive.connectionBus = QLatin1String(kind->connectionBus);
    Block block{drive.id + QLatin1String(kind->partitionSuffix)};
    block.label = label.isEmpty() ? freeLabel(word) : label;
    block.drive = m_storage.plug(drive);
    m_storage.plug(block);
    return Reply::of({block.label});
}

Reply StoragePorts::unplug(const QString &label)
{
    const QStringList all = labels();
    if (label.isEmpty() && all.size() != 1)
        return ControlNames::unknown(
            all.isEmpty()
                ? Text::tr("nothing is plugged in")
                : Text::tr("say which one to unplug: %1").arg(all.join(QStringLiteral(", "))));
    const QString wanted = label.isEmpty() ? all.first() : label;
    const QMap<QString, Block> blocks = m_storage.blocks();
    const auto found = std::find_if(blocks.begin(), blocks.end(),
                                    [&](const Block &block) { return block.label == wanted; });
    if (found == blocks.end())
        return ControlNames::unknown(Text::tr("%1 is not plugged in").arg(quoted(wanted)));
    m_storage.unplug(found.key());
    m_storage.unplug(found->drive);
    return Reply::of({wanted});
}

QVector<StoragePorts::Medium> StoragePorts::media() const
{
    QVector<Medium> media;
    const QMap<QString, Drive> drives = m_storage.drives();
    for (const Block &block : m_storage.blocks()) {
        const QString bus = drives.value(block.drive).connectionBus;
        for (const Kind &kind : Kinds) {
            if (bus == QLatin1String(kind.connectionBus))
                media.append({QLatin1String(kind.word), block.label, block.mountPoints.value(0)});
        }
    }
    return media;
}

QStringList StoragePorts::labels() const
{
    QStringList labels;
    for (const Block &block : m_storage.blocks())
        labels.append(block.label);
    return labels;
}

QString StoragePorts::freeLabel(const QString &kind) const
{
    const QString first = QLatin1String(findKind(kind)->label);
    const QStringList taken = labels();
    QString label = first;
    for (int number = 2; taken.contains(label); ++number)
        label = first + QString::number(number);
    return label;
}

QString StoragePorts::freeDrive(const QString &kind) const
{
    QStringList taken;
    for (const Drive &drive : m_storage.drives())
        taken.append(drive.id);
    const QString prefix = QLatin1String(findKind(kind)->drivePrefix);
    int number = 0;
    while (taken.contains(prefix + QString::number(number)))
        ++number;
    return prefix + QString::number(number);
}

} // namespace Simulator
