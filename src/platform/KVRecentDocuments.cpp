#include "KVRecentDocuments.h"

#include "KVSystemLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <glib.h>

#include <memory>

namespace {

// The type the application's desktop entry declares for its images.
constexpr char SparseImageMimeType[] = "application/x-apple-diskimage-sparse";

struct BookmarkFileDeleter
{
    void operator()(GBookmarkFile *file) const { g_bookmark_file_free(file); }
};

void logError(GError *error)
{
    KVSystemLog::write(QStringLiteral("Error: %1").arg(QString::fromUtf8(error->message)));
    g_error_free(error);
}

} // namespace

KVRecentDocuments::KVRecentDocuments()
    : m_file(QFile::decodeName(g_get_user_data_dir()) + QStringLiteral("/recently-used.xbel"))
{
}

KVRecentDocuments::KVRecentDocuments(QString xbelFile)
    : m_file(std::move(xbelFile))
{
}

void KVRecentDocuments::noteNewRecentDocumentURL(const QString &path) const
{
    std::unique_ptr<GBookmarkFile, BookmarkFileDeleter> bookmarks(g_bookmark_file_new());
    const QByteArray file = QFile::encodeName(m_file);
    GError *error = nullptr;
    if (QFileInfo::exists(m_file) && !g_bookmark_file_load_from_file(bookmarks.get(), file.constData(), &error)) {
        // A damaged list is the desktop's business: leave it as it is.
        logError(error);
        return;
    }

    const QByteArray uri = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded();
    const QByteArray application = QCoreApplication::applicationName().toUtf8();
    const QByteArray exec = QFile::encodeName(QCoreApplication::applicationFilePath()) + " %u";
    g_bookmark_file_set_mime_type(bookmarks.get(), uri.constData(), SparseImageMimeType);
    g_bookmark_file_add_application(bookmarks.get(), uri.constData(), application.constData(), exec.constData());

    QDir().mkpath(QFileInfo(m_file).absolutePath());
    if (!g_bookmark_file_to_file(bookmarks.get(), file.constData(), &error))
        logError(error);
}
