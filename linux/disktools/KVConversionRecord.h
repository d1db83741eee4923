#pragma once

#include "KVProcessIdentity.h"

#include <QString>

#include <optional>

namespace kvlinux {

// How far the conversion of one partition has come, kept in the disks'
// runtime directory by the process that converts it, for "cs list" and the
// storage report. The LUKS2 header is what says whether a conversion is
// under way; this record only adds its progress and what to do at the end.
struct KVConversionRecord
{
    QString luksUuid;
    QString device;      // /dev/sdXN
    bool forward = true; // encrypting
    quint64 done = 0;    // bytes
    quint64 total = 0;
    QString volumeName;
    QString volumeUuid;  // of the file system inside
    // The file system's capacity and free space when the conversion began:
    // offline nothing can ask the file system itself until it is over.
    quint64 fileSystemSize = 0;
    quint64 freeSpace = 0;
    KVProcessIdentity converter;

    int percent() const { return total ? int(done * 100 / total) : 0; }

    bool save(const QString &directory) const;
    void remove(const QString &directory) const;
    static std::optional<KVConversionRecord> load(const QString &directory, const QString &luksUuid);
    // Where the converter says why it stopped before the end.
    static QString logPath(const QString &directory, const QString &luksUuid);

private:
    static QString path(const QString &directory, const QString &luksUuid);
};

} // namespace kvlinux
