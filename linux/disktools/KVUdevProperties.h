#pragma once

#include <QHash>
#include <QString>

#include <sys/types.h>

namespace kvlinux {

// What udev found out about a block device ("E:KEY=VALUE" lines in its
// database, readable by everybody): the file system's type, UUID and label,
// from blkid run as root. An ordinary user who may not open a partition
// learns from here that it holds LUKS2 and which volume it is.
class KVUdevProperties
{
public:
    explicit KVUdevProperties(QString databaseDirectory = QStringLiteral("/run/udev/data"));

    // Empty when udev keeps nothing for the device (or runs nowhere here).
    QHash<QString, QString> of(dev_t device) const;

    // "ID_FS_LABEL_ENC" values escape bytes as "\xNN".
    static QString decodeEscapes(const QString &encoded);

private:
    QString m_directory;
};

} // namespace kvlinux
