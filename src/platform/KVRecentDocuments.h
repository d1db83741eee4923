#pragma once

#include <QString>

// The desktop's list of recently used files: the freedesktop
// recently-used.xbel that file choosers and file managers read.
class KVRecentDocuments
{
public:
    // The user's own list.
    KVRecentDocuments();
    // A list in another file (tests).
    explicit KVRecentDocuments(QString xbelFile);

    // Records an image file as used now by Korvelle. Failures only go to the log.
    void noteNewRecentDocumentURL(const QString &path) const;

    const QString &fileName() const { return m_file; }

private:
    QString m_file;
};
