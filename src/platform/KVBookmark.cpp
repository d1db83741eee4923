#include "KVBookmark.h"

#include "model/KVLocalization.h"
#include "model/KVDisplayText.h"
#include "tools/KVPropertyList.h"
#include "tools/KVValue.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QQueue>
#include <QSet>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

constexpr qint64 Version = 1;
// How many folder entries a search for a moved file may look at, so that
// resolving stays quick however large the file system is.
constexpr int SearchBudget = 50000;
// Cocoa's codes for a missing file and for a bookmark that cannot be read.
constexpr int NoSuchFileError = 4;
constexpr int FileReadCorruptFileError = 259;

// A file is its device and inode, and, since a deleted file's inode is soon
// given to a new file, its birth time where the file system records one.
struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 birthTime = 0; // nanoseconds; 0 where the file system keeps none
    bool operator==(const FileIdentity &) const = default;
};

std::optional<FileIdentity> identityOf(const QByteArray &path, int flags = 0)
{
    struct statx info{};
    if (::statx(AT_FDCWD, path.constData(), flags, STATX_TYPE | STATX_INO | STATX_BTIME, &info) != 0
        || !S_ISREG(info.stx_mode))
        return std::nullopt;
    const qint64 birth = (info.stx_mask & STATX_BTIME) ? qint64(info.stx_btime.tv_sec) * 1000000000 + info.stx_btime.tv_nsec : 0;
    return FileIdentity{quint64(makedev(info.stx_dev_major, info.stx_dev_minor)), quint64(info.stx_ino), birth};
}

KVAppError noSuchFile(const QString &path)
{
    return KVAppError(NSCocoaErrorDomain, NoSuchFileError, KVLocalization::tr("The file couldn’t be opened."),
                      KVLocalization::tr("The file “%1” couldn’t be opened because there is no such file.")
                          .arg(KVDisplayText::inSentence(QFileInfo(path).fileName())));
}

// Breadth-first search of a folder tree for a file with the given identity,
// staying on its file system and never following symbolic links.
class MovedFileSearch
{
public:
    MovedFileSearch(FileIdentity wanted, QByteArray suffix) : m_wanted(wanted), m_suffix(std::move(suffix)) {}

    std::optional<QByteArray> searchFrom(const QByteArray &root)
    {
        QQueue<QByteArray> folders;
        folders.enqueue(root);
        while (!folders.isEmpty() && m_budget > 0) {
            const QByteArray folder = folders.dequeue();
            if (m_searched.contains(folder))
                continue;
            m_searched.insert(folder);
            DIR *dir = ::opendir(folder.constData());
            if (!dir)
                continue;
            while (dirent *entry = ::readdir(dir)) {
                if (--m_budget <= 0)
                    break;
                if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
                    continue;
                const QByteArray path = folder + '/' + entry->d_name;
                struct stat info{};
                if (::lstat(path.constData(), &info) != 0 || quint64(info.st_dev) != m_wanted.device)
                    continue;
                if (S_ISREG(info.st_mode) && quint64(info.st_ino) == m_wanted.inode
                    && identityOf(path, AT_SYMLINK_NOFOLLOW) == m_wanted && isSameKind(path)) {
                    ::closedir(dir);
                    return path;
                }
                if (S_ISDIR(info.st_mode))
                    folders.enqueue(path);
            }
            ::closedir(dir);
        }
        return std::nullopt;
    }

private:
    // Without a birth time to tell a reused inode from the file we look for,
    // a file of another kind (another extension) is not taken for it.
    bool isSameKind(const QByteArray &path) const
    {
        return m_wanted.birthTime != 0 || path.endsWith(m_suffix);
    }

    FileIdentity m_wanted;
    QByteArray m_suffix;
    int m_budget = SearchBudget;
    QSet<QByteArray> m_searched;
};

std::optional<QByteArray> findMovedFile(const QByteArray &oldPath, FileIdentity wanted)
{
    const QByteArray suffix = '.' + QFile::encodeName(QFileInfo(QFile::decodeName(oldPath)).suffix());
    MovedFileSearch search(wanted, suffix);
    // Nearest first: the old folder, then the two folders above it (never the
    // root of everything), then home.
    QByteArray folder = QFile::encodeName(QFileInfo(QFile::decodeName(oldPath)).absolutePath());
    for (int level = 0; level < 3 && folder != "/"; ++level) {
        if (std::optional<QByteArray> found = search.searchFrom(folder))
            return found;
        folder = QFile::encodeName(QFileInfo(QFile::decodeName(folder)).absolutePath());
    }
    return search.searchFrom(QFile::encodeName(QDir::homePath()));
}

} // namespace

KVResult<QByteArray> KVBookmark::create(const QString &path)
{
    const QByteArray encoded = QFile::encodeName(QFileInfo(path).absoluteFilePath());
    const std::optional<FileIdentity> identity = identityOf(encoded);
    if (!identity)
        return noSuchFile(path);
    struct statvfs fileSystem{};
    ::statvfs(encoded.constData(), &fileSystem);
    return KVPropertyList::encodeBinary(QVariantMap{
        {QStringLiteral("version"), Version},
        {QStringLiteral("path"), QFile::decodeName(encoded)},
        {QStringLiteral("device"), qint64(identity->device)},
        {QStringLiteral("inode"), qint64(identity->inode)},
        {QStringLiteral("birthTime"), identity->birthTime},
        {QStringLiteral("fileSystem"), qint64(fileSystem.f_fsid)},
    });
}

KVResult<KVBookmark::Record> KVBookmark::read(const QByteArray &bookmark)
{
    const QVariantMap fields = KVValue::dictionary(KVPropertyList::decode(bookmark).value_or(QVariant()));
    const QString path = KVValue::pathValue(fields.value(QStringLiteral("path")));
    if (path.isEmpty() || KVValue::integerValue(fields.value(QStringLiteral("version"))) > Version)
        return KVAppError(NSCocoaErrorDomain, FileReadCorruptFileError,
                          KVLocalization::tr("The file couldn’t be opened."),
                          KVLocalization::tr("The reference to the file is damaged."));
    return Record{path, quint64(KVValue::integerValue(fields.value(QStringLiteral("device")))),
                  quint64(KVValue::integerValue(fields.value(QStringLiteral("inode")))),
                  KVValue::integerValue(fields.value(QStringLiteral("birthTime")))};
}

KVResult<KVBookmark::Resolution> KVBookmark::resolve(const QByteArray &bookmark)
{
    const KVResult<Record> record = read(bookmark);
    if (!record)
        return record.error();
    const FileIdentity wanted{record.value().device, record.value().inode, record.value().birthTime};
    const QString &path = record.value().path;
    const QByteArray encoded = QFile::encodeName(path);
    if (identityOf(encoded) == wanted)
        return Resolution{path, false};
    if (std::optional<QByteArray> moved = findMovedFile(encoded, wanted))
        return Resolution{QFile::decodeName(*moved), true};
    return noSuchFile(path);
}

KVOptionalError KVBookmark::checkReachable(const QString &path)
{
    if (::access(QFile::encodeName(path).constData(), R_OK) == 0)
        return std::nullopt;
    const int error = errno;
    if (error == ENOENT)
        return noSuchFile(path);
    return KVAppError(NSCocoaErrorDomain, error, KVLocalization::tr("The file couldn’t be opened."),
                      KVLocalization::tr("The file “%1” couldn’t be opened: %2.")
                          .arg(KVDisplayText::inSentence(QFileInfo(path).fileName()), QString::fromLocal8Bit(std::strerror(error))));
}
