#include "KVAttachCommand.h"

#include "KVExternalCommand.h"
#include "KVLuksImage.h"
#include "KVSecureBytes.h"
#include "KVSpawn.h"
#include "KVSystemEntities.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

namespace {

QString column(const QString &text, int width)
{
    return text.left(width).leftJustified(width);
}

} // namespace

int KVAttachCommand::run(const KVHdiutilArguments &arguments)
{
    if (arguments.operands().size() != 1) {
        m_out.error(QStringLiteral("hdiutil: attach: an image must be specified"));
        return 1;
    }
    m_out.verbose(QStringLiteral("Initializing…"));
    const QString imagePath = QFileInfo(arguments.operands().first()).absoluteFilePath();
    // An image we may not write is attached read-only, as hdiutil does.
    const bool readOnly = arguments.has(QStringLiteral("-readonly"))
        || access(QFile::encodeName(imagePath).constData(), W_OK) != 0;
    const QString mountRoot = arguments.hasValue(QStringLiteral("-mountroot"))
        ? arguments.value(QStringLiteral("-mountroot"))
        : defaultMountRoot();

    auto fail = [this](const KVImageError &error) {
        printFailure(error);
        return 1;
    };
    if (!QFileInfo(mountRoot).isDir())
        return fail(KVImageError(KVImageError::NoMountableFileSystems));
    if (!registry())
        return fail(KVImageError::fromErrno(EACCES));

    KVLuksImage image(imagePath);
    if (auto error = image.load())
        return fail(*error);
    if (isInUse(imagePath))
        return fail(KVImageError(KVImageError::Busy));

    KVSecureBytes password;
    if (arguments.has(QStringLiteral("-stdinpass"))) {
        auto read = readPassword();
        if (!read)
            return fail(KVImageError(KVImageError::Authentication));
        password = std::move(*read);
    }
    m_out.verbose(QStringLiteral("Attaching…"));
    KVSecureBytes volumeKey;
    if (auto error = image.unlock(password, volumeKey))
        return fail(*error);
    password = KVSecureBytes();

    KVAttachment record;
    if (auto error = attachUnlocked(image, volumeKey, readOnly, mountRoot, record))
        return fail(*error);
    if (arguments.has(QStringLiteral("-autoopen")))
        openInFileManager(record.mountPoint);
    return 0;
}

KVImageResult KVAttachCommand::attachUnlocked(const KVLuksImage &image, const KVSecureBytes &volumeKey,
                                              bool readOnly, const QString &mountRoot,
                                              KVAttachment &record)
{
    const KVAttachmentRegistry *records = registry();
    if (!records)
        return KVImageError::fromErrno(EACCES);
    struct stat st;
    if (stat(QFile::encodeName(image.path()).constData(), &st) != 0)
        return KVImageError::fromErrno(errno);
    {
        const auto lock = records->lock();
        auto reserved = records->reserve();
        if (!reserved)
            return KVImageError::fromErrno(EACCES);
        record = *reserved;
        record.imageDevice = st.st_dev;
        record.imageInode = st.st_ino;
        record.imagePath = image.path();
        records->save(record);
    }

    m_out.verbose(QStringLiteral("Mounting…"));
    KVAttachRequest request;
    request.imagePath = image.path();
    request.geometry = image.geometry();
    request.readOnly = readOnly;
    request.mountRoot = QDir(mountRoot).canonicalPath();
    request.volumeName = image.volumeName();
    if (auto error = dataPath().attach(request, volumeKey, record, *records)) {
        const auto lock = records->lock();
        records->remove(record);
        return error;
    }
    record.stage = KVAttachment::Stage::Attached;
    records->save(record);
    m_out.verbose(QStringLiteral("Finishing…"));
    printDevices(record);
    return std::nullopt;
}

QString KVAttachCommand::defaultMountRoot()
{
    QString root;
    if (geteuid() == 0) {
        const passwd *user = getpwuid(0);
        root = QStringLiteral("/media/") + QString::fromLocal8Bit(user ? user->pw_name : "root");
    } else {
        root = QDir::homePath() + QStringLiteral("/Volumes");
    }
    QDir().mkpath(root);
    return root;
}

void KVAttachCommand::printFailure(const KVImageError &error) const
{
    m_out.verbose(QStringLiteral("Error %1 (%2).").arg(error.code()).arg(error.reason()));
    if (m_out.isVerbose())
        m_out.error(QStringLiteral("DIHLDiskImageAttach() returned %1")
                        .arg(KVToolOutput::unambiguousCode(error.code(), {80, 2, 112, 16})));
    m_out.error(QStringLiteral("hdiutil: attach failed - ") + error.reason());
}

void KVAttachCommand::printDevices(const KVAttachment &record) const
{
    for (const KVSystemEntity &entity : KVSystemEntities::of(record, true))
        m_out.line(column(entity.devEntry, 20) + QLatin1Char('\t') + column(entity.contentHint, 31)
                   + QLatin1Char('\t') + entity.mountPoint);
}

void KVAttachCommand::openInFileManager(const QString &folder)
{
    const QString opener = KVExternalCommand::locate(QStringLiteral("xdg-open"));
    if (!opener.isEmpty())
        KVSpawn::detached(opener, {folder});
    else if (const QString gio = KVExternalCommand::locate(QStringLiteral("gio")); !gio.isEmpty())
        KVSpawn::detached(gio, {QStringLiteral("open"), folder});
}

} // namespace kvlinux
