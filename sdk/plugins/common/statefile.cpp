// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/statefile.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <glib.h>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QLatin1String Directory("/etc/govd");
const QLatin1String KeptDirectory("/var/lib/govd/plugins");
const QLatin1String ShownDirectory("/run/govd");
constexpr int MaximumSize = 1024 * 1024;

QString keptPath(const QString &name)
{
    return QStringLiteral("%1/%2.conf").arg(KeptDirectory, name);
}

struct Reading
{
    QByteArray content;
    QString fault; ///< as the end of a sentence about the file
    bool isMissing = false;
};

Reading faulty(const QString &fault)
{
    return {QByteArray(), fault, false};
}

Reading readRegularFile(const QByteArray &path)
{
    // A pipe can have replaced the file since stat(): O_NONBLOCK, so that open() does not wait for
    // a writer.
    const int descriptor = open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QFile file;
    if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFile::AutoCloseHandle))
        return faulty(QStringLiteral("cannot be read (%1)").arg(qt_error_string(errno)));
    const QByteArray content = file.read(MaximumSize + 1);
    if (file.error() != QFile::NoError)
        return faulty(QStringLiteral("cannot be read (%1)").arg(file.errorString()));
    if (content.size() > MaximumSize)
        return faulty(QStringLiteral("is larger than a mebibyte"));
    return content.isEmpty() ? faulty(QStringLiteral("is empty"))
                             : Reading{content, QString(), false};
}

/// Opens regular files only. A dangling link is a fault, not a missing file: its target may exist
/// outside the file system that the unit gives the daemon.
Reading readFile(const QByteArray &path)
{
    struct stat status;
    if (stat(path.constData(), &status) != 0) {
        if (errno != ENOENT)
            return faulty(QStringLiteral("cannot be read (%1)").arg(qt_error_string(errno)));
        return lstat(path.constData(), &status) == 0
            ? faulty(QStringLiteral("is a link to what the daemon does not see"))
            : Reading{QByteArray(), QString(), true};
    }
    if (!S_ISREG(status.st_mode))
        return faulty(QStringLiteral("is no regular file"));
    return readRegularFile(path);
}

/// Identifies the directory of the files, which a mount or an unmount replaces by another one.
StateFile::DirectoryId directoryId()
{
    struct stat status;
    if (stat(Directory.latin1(), &status) != 0)
        return {};
    return {status.st_dev, status.st_ino};
}

/// The state as one word for programs and as the end of a sentence about the file.
struct Condition
{
    QString state;
    QString text;
};

Condition conditionOf(const QString &fault, bool isAnythingInForce)
{
    if (fault.isEmpty() && isAnythingInForce)
        return {QStringLiteral("good"), QStringLiteral("is good: it is in force")};
    if (fault.isEmpty())
        return {QStringLiteral("absent"), QStringLiteral("is not there: nothing is in force")};
    if (isAnythingInForce)
        return {QStringLiteral("kept"),
                fault + QStringLiteral(": its last good content is in force")};
    return {QStringLiteral("never-good"),
            fault + QStringLiteral(", and no good content is known: nothing is in force")};
}

} // namespace

StateFile::StateFile(const QString &name, Check isSound)
    : m_name(name)
    , m_isSound(isSound)
    , m_isDaemon(QCoreApplication::applicationName() == QLatin1String("govd"))
{
    if (m_isDaemon) {
        QDir().mkpath(QFileInfo(KeptDirectory).path());
        mkdir(qPrintable(KeptDirectory), 0700);
        QDir().mkpath(ShownDirectory);
    }
    const Reading kept = readFile(keptPath(name).toLocal8Bit());
    if (!kept.content.isEmpty() && isSound(kept.content))
        m_content = kept.content;
    else if (!kept.isMissing)
        qWarning().noquote() << name
                + QStringLiteral(": the last good content is lost: %1 %2")
                      .arg(keptPath(name),
                           kept.fault.isEmpty() ? QStringLiteral("is malformed") : kept.fault);
    // A watch of the directory reports a file that is replaced, one of the file a write in place.
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &StateFile::update);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &StateFile::update);
}

QString StateFile::path() const
{
    return QStringLiteral("%1/%2.conf").arg(Directory, m_name);
}

void StateFile::watch()
{
    if (!m_watcher.directories().contains(Directory) && !m_watcher.addPath(Directory)
        && !m_hasWatchFailed) {
        m_hasWatchFailed = true;
        qWarning().noquote() << m_name
                + QStringLiteral(": cannot watch %1: edits go unnoticed").arg(Directory);
    }
    const QFileInfo file(path());
    if (file.isFile() && file.isReadable())
        m_watcher.addPath(path());
}

void StateFile::update()
{
    watch(); // first, so that an edit made while reading is reported
    Reading file = readFile(path().toLocal8Bit());
    // GLib's parser stops at a zero byte, such as a loss of power can leave in a file.
    if (!file.content.isEmpty() && (file.content.contains('\0') || !m_isSound(file.content)))
        file.fault = QStringLiteral("is malformed");
    const DirectoryId directory = directoryId();
    const bool isSameDirectory = directory == m_directory && directory != DirectoryId();
    if (!file.isMissing)
        m_directory = directory;
    else if (!m_content.isEmpty() && !isSameDirectory)
        file.fault = QStringLiteral("is not there");

    const QByteArray before = m_content;
    keep(file.fault.isEmpty() ? file.content : m_content);
    report(file.fault);
    if (m_content != before)
        Q_EMIT changed();
}

/// Puts a content in force and saves it as the last good one; retries a save that failed before.
void StateFile::keep(const QByteArray &content)
{
    if (content == m_content && m_isKept)
        return;
    m_content = content;
    const QString path = keptPath(m_name);
    m_isKept = content.isEmpty() ? remove(path) : store(path, content, 0600);
}

/// Logs the state and writes it for govctl when it has changed. A good start is not logged.
void StateFile::report(const QString &fault)
{
    const Condition condition = conditionOf(fault, !m_content.isEmpty());
    const QString message = path() + QLatin1Char(' ') + condition.text;
    if (message == m_message)
        return;
    const bool isStart = m_message.isEmpty();
    m_message = message;
    m_isGood = condition.state == QLatin1String("good");

    if (!fault.isEmpty())
        qWarning().noquote() << m_name + QLatin1Char(':') << message;
    else if (!isStart)
        qInfo().noquote() << m_name + QLatin1Char(':') << message;
    const QJsonObject shown{{QStringLiteral("name"), m_name},
                            {QStringLiteral("state"), condition.state},
                            {QStringLiteral("message"), message}};
    store(QStringLiteral("%1/%2.json").arg(ShownDirectory, m_name), QJsonDocument(shown).toJson(),
          0644);
}

/// Writes a new file and renames it to @p path.
bool StateFile::store(const QString &path, const QByteArray &content, int mode) const
{
    GError *error = nullptr;
    if (!m_isDaemon
        || g_file_set_contents_full(qPrintable(path), content.constData(), content.size(),
                                    G_FILE_SET_CONTENTS_CONSISTENT, mode, &error))
        return true;
    qWarning().noquote() << m_name + QLatin1Char(':') << error->message;
    g_error_free(error);
    return false;
}

bool StateFile::remove(const QString &path) const
{
    if (!m_isDaemon || unlink(qPrintable(path)) == 0 || errno == ENOENT)
        return true;
    qWarning().noquote() << m_name + QStringLiteral(": cannot forget") << path
                         << qt_error_string(errno);
    return false;
}
