#pragma once

#include "model/KVResult.h"

#include <QByteArray>
#include <QString>


// A persistent reference to a file that survives a move or rename within its
// file system.
//
// The bookmark records the file's path with its device and inode and the file
// system's identity. Resolving tries the recorded path first; when the file is
// no longer there (or another file is), it looks for the same inode where a
// moved file is likely to be: the old folder, the folders near it and the
// user's home, on the same file system, within a bounded search. A file found
// elsewhere is reported stale so that the caller can record a fresh bookmark.
class KVBookmark
{
public:
    struct Resolution
    {
        QString path;
        bool stale = false;
    };

    // What a bookmark records of its file.
    struct Record
    {
        QString path;
        quint64 device = 0;
        quint64 inode = 0;
        qint64 birthTime = 0; // nanoseconds; 0 where the file system keeps none
    };

    static KVResult<QByteArray> create(const QString &path);
    // Reads a bookmark without looking at any file; an error when it is damaged.
    static KVResult<Record> read(const QByteArray &bookmark);
    static KVResult<Resolution> resolve(const QByteArray &bookmark);
    // Whether the file can be read now.
    static KVOptionalError checkReachable(const QString &path);
};
