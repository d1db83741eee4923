#include "KVAttachmentRegistry.h"

#include "platform/KVMountTable.h"


#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace kvlinux {

namespace {

constexpr int firstNumber = 2; // disk0 and disk1 are a Mac's own disks
const QString sessionPrefix = QStringLiteral("session-");

} // namespace

KVAttachmentRegistry::KVAttachmentRegistry(QString directory)
    : m_directory(std::move(directory))
{
}

KVAttachmentRegistry::Lock::Lock(const QString &path)
    : m_fd(open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
{
    if (m_fd >= 0)
        while (flock(m_fd, LOCK_EX) != 0 && errno == EINTR) {
        }
}

KVAttachmentRegistry::Lock::~Lock()
{
    if (m_fd >= 0)
        close(m_fd);
}

KVAttachmentRegistry::Lock KVAttachmentRegistry::lock() const
{
    return Lock(m_directory + QStringLiteral("/lock"));
}

QString KVAttachmentRegistry::recordPath(int number) const
{
    return QStringLiteral("%1/disk%2.json").arg(m_directory).arg(number);
}

QString KVAttachmentRegistry::payloadDirectory(int number) const
{
    return QStringLiteral("%1/disk%2").arg(m_directory).arg(number);
}

QList<KVAttachment> KVAttachmentRegistry::records() const
{
    static const QRegularExpression recordName(QStringLiteral("^disk(\\d+)\\.json$"));
    QList<KVAttachment> records;
    const QStringList names = QDir(m_directory).entryList({QStringLiteral("disk*.json")}, QDir::Files,
                                                          QDir::Name);
    for (const QString &name : names) {
        if (!recordName.match(name).hasMatch())
            continue;
        QFile file(m_directory + QLatin1Char('/') + name);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonDocument json = QJsonDocument::fromJson(file.readAll());
        if (json.isObject())
            records.append(KVAttachment::fromJson(json.object()));
    }
    std::sort(records.begin(), records.end(),
              [](const KVAttachment &a, const KVAttachment &b) { return a.number < b.number; });
    return records;
}

std::optional<KVAttachment> KVAttachmentRegistry::reserve() const
{
    for (int number = firstNumber;; ++number) {
        if (QFile::exists(recordPath(number)))
            continue;
        // A directory without a record may still hold a mount from a run that
        // was killed; such a number stays unused until the mount is gone.
        const QString directory = payloadDirectory(number);
        QDir().rmdir(directory);
        if (QFile::exists(directory))
            continue;
        if (!QDir().mkdir(directory))
            return std::nullopt;
        KVAttachment record;
        record.number = number;
        record.bootId = bootId();
        record.tool = KVProcessIdentity::self();
        record.payloadDirectory = directory;
        if (!save(record))
            return std::nullopt;
        return record;
    }
}

bool KVAttachmentRegistry::save(const KVAttachment &record) const
{
    QSaveFile file(recordPath(record.number));
    return file.open(QIODevice::WriteOnly)
        && file.write(QJsonDocument(record.toJson()).toJson()) >= 0
        && file.commit();
}

void KVAttachmentRegistry::remove(const KVAttachment &record) const
{
    // The volume's folder goes with its record (an attach killed after making
    // it leaves it empty); rmdir refuses a folder that is in use or not empty.
    if (record.createdMountPoint && !record.mountPoint.isEmpty())
        QDir().rmdir(record.mountPoint);
    QDir().rmdir(payloadDirectory(record.number));
    QFile::remove(recordPath(record.number));
}

QString KVAttachmentRegistry::makeSessionDirectory() const
{
    QByteArray pattern = QFile::encodeName(
        QStringLiteral("%1/%2%3-XXXXXX").arg(m_directory, sessionPrefix).arg(getpid()));
    return mkdtemp(pattern.data()) ? QFile::decodeName(pattern) : QString();
}

void KVAttachmentRegistry::removeAbandonedSessions() const
{
    const KVMountTable mounts = KVMountTable::current();
    const QStringList names = QDir(m_directory).entryList({sessionPrefix + QLatin1Char('*')},
                                                          QDir::Dirs);
    for (const QString &name : names) {
        const pid_t owner = name.mid(sessionPrefix.size()).section(QLatin1Char('-'), 0, 0).toInt();
        const QString path = m_directory + QLatin1Char('/') + name;
        if (kill(owner, 0) != 0 && errno == ESRCH && !mounts.at(path))
            QDir().rmdir(path);
    }
}

QString KVAttachmentRegistry::bootId()
{
    QFile file(QStringLiteral("/proc/sys/kernel/random/boot_id"));
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll().trimmed()) : QString();
}

} // namespace kvlinux
