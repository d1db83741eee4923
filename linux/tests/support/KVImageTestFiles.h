#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>
#include <QVariantMap>

#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

// Small file and listing helpers shared by the image tests.
namespace KVImageTestFiles {

inline QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(bytes.data()), size / 4);
    return bytes;
}

// Written through to the volume, so that it takes space in the image even if
// it is deleted before the file system would have written it back.
inline bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush()
        && fsync(file.handle()) == 0;
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QByteArray checksum(const QString &path)
{
    return QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha256);
}

// Bytes the file takes on disk (a sparse image takes less than its size).
inline qint64 allocatedBytes(const QString &path)
{
    struct stat st;
    return stat(QFile::encodeName(path).constData(), &st) == 0 ? qint64(st.st_blocks) * 512 : -1;
}

// The one image of an "hdiutil info -plist" listing, or nothing.
inline QVariantMap onlyImage(const QVariantMap &info)
{
    const QVariantList images = info.value(QStringLiteral("images")).toList();
    return images.size() == 1 ? images.first().toMap() : QVariantMap();
}

// /dev/diskN of a listed image.
inline QString wholeDisk(const QVariantMap &image)
{
    const QVariantList entities = image.value(QStringLiteral("system-entities")).toList();
    return entities.isEmpty() ? QString()
                              : entities.first().toMap().value(QStringLiteral("dev-entry")).toString();
}

} // namespace KVImageTestFiles

} // namespace kvlinux
