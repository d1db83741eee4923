#pragma once

#include "KVProcessIdentity.h"

#include <QJsonObject>
#include <QString>

namespace kvlinux {

// What we know about one attached image, kept in the runtime directory while
// it is attached. The record names the pieces that make up the attachment so
// that they can be found again and checked against the system; it is never
// trusted on its own (see KVAttachedImages).
struct KVAttachment
{
    enum class Stage { Attaching, Attached };

    int number = 0;              // N of /dev/diskN
    Stage stage = Stage::Attaching;
    QString bootId;              // records from an earlier boot describe nothing
    KVProcessIdentity tool;      // the hdiutil run that is attaching it

    QString imagePath;
    quint64 imageDevice = 0;     // st_dev and st_ino of the image file: the
    quint64 imageInode = 0;      // same image under another path is still busy
    bool readOnly = false;
    QString volumeName;
    QString volumeUuid;
    qint64 payloadSize = 0;

    QString dataPath;            // which KVDataPath made it
    KVProcessIdentity daemon;    // the imagefs process
    QString payloadDirectory;    // its FUSE mount; the payload is a file in it
    QString loopDevice;          // kernel path: /dev/loopN
    KVProcessIdentity fuse2fs;   // unprivileged path: the file system process
    QString mountPoint;
    bool createdMountPoint = false;

    QString wholeDisk() const { return QStringLiteral("disk%1").arg(number); }
    QString volumeDisk() const { return wholeDisk() + QStringLiteral("s1"); }
    QString payloadPath() const;

    QJsonObject toJson() const;
    static KVAttachment fromJson(const QJsonObject &json);
};

} // namespace kvlinux
