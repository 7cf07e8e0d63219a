// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// Arbitrary files, and arbitrary keys written into them.
//
// An input is "+" or "-" for the value, the key, an empty line, and the content of the file.
#include "keyfile.h"
#include "names.h"
#include "tests/fuzz/check.h"

#include <QFile>
#include <QTextCodec>

#include <algorithm>
#include <map>

namespace {

const QString Path = QStringLiteral("/dev/shm/fuzzed.conf");
const QByteArray Group = QByteArrayLiteral("policy");

/// Values as they stand in the file, by group and key.
using Entries = std::map<std::pair<QByteArray, QByteArray>, QByteArray>;

using GLibFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;
using GLibTexts = std::unique_ptr<gchar *, decltype(&g_strfreev)>;
using GLibText = std::unique_ptr<gchar, decltype(&g_free)>;

struct Content
{
    bool loads;
    QByteArray firstGroup;
    Entries entries;
};

/// What GLib itself finds in the file, not through the daemon's class.
Content contentOf(const QByteArray &bytes)
{
    const GLibFile file(g_key_file_new(), g_key_file_unref);
    if (!g_key_file_load_from_data(file.get(), bytes.constData(), gsize(bytes.size()),
                                   G_KEY_FILE_NONE, nullptr))
        return {false, {}, {}};
    Content content{true, GLibText(g_key_file_get_start_group(file.get()), g_free).get(), {}};
    const GLibTexts groups(g_key_file_get_groups(file.get(), nullptr), g_strfreev);
    for (gchar **group = groups.get(); *group; ++group) {
        const GLibTexts keys(g_key_file_get_keys(file.get(), *group, nullptr, nullptr), g_strfreev);
        for (gchar **key = keys.get(); *key; ++key) {
            const GLibText value(g_key_file_get_value(file.get(), *group, *key, nullptr), g_free);
            // The end of a DOS line belongs to the value only where a file ends with it.
            QByteArray text = value.get();
            while (text.endsWith('\r'))
                text.chop(1);
            content.entries[{*group, *key}] = text;
        }
    }
    return content;
}

/// The rule for keys, written independently of the daemon's.
bool isGoodKey(const QString &key, const QByteArray &firstGroup)
{
    const auto isBad = [](QChar each) {
        return each.category() == QChar::Other_Control || each == QLatin1Char('=')
            || each == QLatin1Char('[') || each == QLatin1Char(']');
    };
    const bool ownsEncoding = firstGroup.isEmpty() || firstGroup == Group;
    return !key.isEmpty() && std::none_of(key.begin(), key.end(), isBad)
        && !key.startsWith(QLatin1Char('#')) && !key.startsWith(QLatin1Char(' '))
        && !key.endsWith(QLatin1Char(' ')) && QString::fromUtf8(key.toUtf8()) == key
        && !(ownsEncoding && key == QLatin1String("Encoding"));
}

void write(const QByteArray &bytes)
{
    QFile file(Path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "cannot write");
}

QByteArray read()
{
    QFile file(Path);
    require(file.open(QIODevice::ReadOnly), "the file is gone");
    return file.readAll();
}

/// The daemon must read what GLib reads from the file.
void checkReading(const Content &content)
{
    KeyFile file;
    require(!file.load(Path) == content.loads, "the readers differ in what they take for a file");
    const auto values = file.booleans(Names::ConfigurationGroup);
    for (const auto &[key, value] : values) {
        if (key.contains(QChar::ReplacementCharacter))
            continue; // a key that is no UTF-8, or several that look alike then
        const auto entry = content.entries.find({Group, key.toUtf8()});
        if (entry == content.entries.end())
            continue; // of a truncated file
        const QByteArray text = entry->second.trimmed();
        require(text == (value ? "true" : "false") || text == (value ? "1" : "0"),
                "another value was read than stands there");
        require(file.boolean(Names::ConfigurationGroup, key) == value, "one key reads in two ways");
    }
}

void checkWriting(const Content &before, const QByteArray &bytes, const QString &key, bool value)
{
    const bool isSaved = saveKeyValue(Path, Names::ConfigurationGroup, key, value);
    require(isSaved == (before.loads && isGoodKey(key, before.firstGroup)),
            isSaved ? "a bad key or file was taken" : "a good key was refused");
    if (!isSaved) {
        require(read() == bytes, "a refused write has changed the file");
        return;
    }
    const Content after = contentOf(read());
    require(after.loads, "the file that was written cannot be read");
    Entries expected = before.entries;
    expected[{Group, key.toUtf8()}] = value ? "true" : "false";
    require(after.entries == expected, "the write has changed something else, or not the key");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    qInstallMessageHandler(ignoreMessage);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    const int end = input.indexOf("\n\n");
    const QString key = QString::fromUtf8(input.mid(1, end < 0 ? -1 : end - 1));
    const QByteArray bytes = end < 0 ? QByteArray() : input.mid(end + 2);

    write(bytes);
    const Content content = contentOf(bytes);
    checkReading(content);
    checkWriting(content, bytes, key, !input.startsWith('-'));
    return 0;
}
