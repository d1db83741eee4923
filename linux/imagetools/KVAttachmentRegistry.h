#pragma once

#include "KVAttachment.h"

#include <QList>
#include <QString>

namespace kvlinux {

// The records of attached images in the runtime directory: diskN.json, with
// the FUSE mount of diskN's payload in the directory diskN. Changes are made
// under an exclusive lock so that concurrent runs never pick the same N.
class KVAttachmentRegistry
{
public:
    explicit KVAttachmentRegistry(QString directory);

    const QString &directory() const { return m_directory; }

    class Lock
    {
    public:
        explicit Lock(const QString &path);
        ~Lock();
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;

    private:
        int m_fd;
    };
    // Held while records are chosen, inspected or removed.
    [[nodiscard]] Lock lock() const;

    QList<KVAttachment> records() const;
    // Takes the lowest free number and writes an "attaching" record for it,
    // with the payload directory created. The caller holds the lock.
    std::optional<KVAttachment> reserve() const;
    bool save(const KVAttachment &record) const;
    // Removes the record, its payload directory and the volume folder it made
    // (each only when empty and nothing is mounted there).
    void remove(const KVAttachment &record) const;

    // A fresh private directory for a payload that is served only while one
    // run works on an image (create, resize, compact); empty when none can be made.
    QString makeSessionDirectory() const;
    // Session directories left behind by runs that were killed.
    void removeAbandonedSessions() const;

    static QString bootId();

private:
    QString recordPath(int number) const;
    QString payloadDirectory(int number) const;

    QString m_directory;
};

} // namespace kvlinux
