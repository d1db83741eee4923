#include "KVCreateCommand.h"

#include "KVAttachCommand.h"
#include "KVExt4.h"
#include "KVLuksImage.h"
#include "KVOfflinePayload.h"
#include "KVSecureBytes.h"
#include "KVSizeArgument.h"
#include "KVVolumeName.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

namespace {

const QString extension = QStringLiteral(".sparseimage");
constexpr quint64 dataOffset = 16 << 20;
constexpr quint32 sectorSize = 4096;

// The file systems hdiutil is asked for all become ext4, Linux's journaled one.
bool isSupportedFileSystem(const QString &name)
{
    static const QStringList accepted = {QStringLiteral("HFS+"), QStringLiteral("HFS+J"),
                                         QStringLiteral("Journaled HFS+"), QStringLiteral("JHFS+"),
                                         QStringLiteral("APFS"), QStringLiteral("ext4")};
    return accepted.contains(name, Qt::CaseInsensitive);
}

class TemporaryImage
{
public:
    explicit TemporaryImage(const QString &target)
    {
        const QFileInfo info(target);
        QByteArray pattern = QFile::encodeName(info.absolutePath() + QStringLiteral("/.")
                                               + info.fileName() + QStringLiteral(".XXXXXX"));
        m_fd = mkostemp(pattern.data(), O_CLOEXEC);
        if (m_fd < 0)
            return;
        m_path = QFile::decodeName(pattern);
        // mkostemp makes the file private; an image gets the usual mode.
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(m_fd, 0666 & ~mask);
    }
    ~TemporaryImage()
    {
        if (m_fd >= 0)
            close(m_fd);
        if (!m_path.isEmpty())
            QFile::remove(m_path);
    }
    int fd() const { return m_fd; }
    const QString &path() const { return m_path; }
    // Moves the file to target unless something is there already.
    KVImageResult commit(const QString &target)
    {
        if (fsync(m_fd) != 0)
            return KVImageError::fromErrno(errno);
        if (renameat2(AT_FDCWD, QFile::encodeName(m_path).constData(), AT_FDCWD,
                      QFile::encodeName(target).constData(), RENAME_NOREPLACE) != 0)
            return errno == EEXIST ? KVImageError(KVImageError::Exists) : KVImageError::fromErrno(errno);
        m_path.clear();
        const int directory = open(QFile::encodeName(QFileInfo(target).absolutePath()).constData(),
                                   O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (directory >= 0) {
            fsync(directory);
            close(directory);
        }
        return std::nullopt;
    }

private:
    int m_fd = -1;
    QString m_path;
};

} // namespace

int KVCreateCommand::run(const KVHdiutilArguments &arguments)
{
    m_out.phase(QStringLiteral("Initializing…"));
    m_out.percent(-1);
    Request request;
    if (auto error = validate(arguments, request)) {
        printFailure(*error);
        return 1;
    }
    std::optional<KVSecureBytes> password = arguments.has(QStringLiteral("-stdinpass"))
        ? readPassword()
        : std::optional<KVSecureBytes>(KVSecureBytes());
    if (!password) {
        printFailure(KVImageError(KVImageError::Authentication));
        return 1;
    }
    KVSecureBytes volumeKey;
    if (auto error = create(request, *password, volumeKey)) {
        printFailure(*error);
        return 1;
    }
    password.reset();
    m_out.line(QStringLiteral("created: ") + request.target);

    if (arguments.has(QStringLiteral("-attach"))) {
        KVAttachCommand attach(m_environment, m_out);
        KVLuksImage image(request.target);
        KVAttachment record;
        KVImageResult error = image.load();
        if (!error)
            error = attach.attachUnlocked(image, volumeKey, false, KVAttachCommand::defaultMountRoot(),
                                          record);
        if (error) {
            attach.printFailure(*error);
            return 1;
        }
    }
    return 0;
}

std::optional<KVImageError> KVCreateCommand::validate(const KVHdiutilArguments &arguments,
                                                      Request &request) const
{
    if (arguments.operands().size() != 1 || !arguments.incomplete().isEmpty())
        return KVImageError(KVImageError::InvalidArgument);
    QString target = QFileInfo(arguments.operands().first()).absoluteFilePath();
    if (!target.endsWith(extension))
        target += extension;
    request.target = target;

    const QString type = arguments.value(QStringLiteral("-type"));
    const QString encryption = arguments.value(QStringLiteral("-encryption"));
    if (type.compare(QLatin1String("SPARSE"), Qt::CaseInsensitive) != 0
        || !isSupportedFileSystem(arguments.value(QStringLiteral("-fs"))))
        return KVImageError(KVImageError::NotSupported);
    if (encryption == QLatin1String("AES-128"))
        request.volumeKeySize = 32; // AES-128-XTS takes two 128-bit keys
    else if (encryption == QLatin1String("AES-256"))
        request.volumeKeySize = 64;
    else
        return KVImageError(KVImageError::NotSupported);

    const auto size = KVSizeArgument::parse(arguments.value(QStringLiteral("-size")));
    if (!size)
        return KVImageError(KVImageError::InvalidArgument);
    request.payloadSize = std::max(*size / sectorSize * sectorSize, minimumPayload);
    request.volumeName = KVVolumeName::sanitized(arguments.hasValue(QStringLiteral("-volname"))
                                                     ? arguments.value(QStringLiteral("-volname"))
                                                     : QFileInfo(target).completeBaseName());

    if (!QFileInfo(QFileInfo(target).absolutePath()).isDir())
        return KVImageError(KVImageError::NoSuchFile);
    struct stat st;
    if (lstat(QFile::encodeName(target).constData(), &st) == 0)
        return KVImageError(KVImageError::Exists);
    return std::nullopt;
}

KVImageResult KVCreateCommand::create(const Request &request, const KVSecureBytes &password,
                                      KVSecureBytes &volumeKey)
{
    TemporaryImage file(request.target);
    if (file.fd() < 0)
        return KVImageError::fromErrno(errno);
    if (ftruncate(file.fd(), off_t(dataOffset + request.payloadSize)) != 0)
        return KVImageError::fromErrno(errno);

    m_out.phase(QStringLiteral("Creating…"));
    m_out.percent(10);
    volumeKey = KVLuksImage::newVolumeKey(request.volumeKeySize);
    if (volumeKey.isEmpty())
        return KVImageError::fromErrno(EIO);
    {
        KVLuksImage image(file.path());
        KVLuksImage::Format format;
        format.volumeKeySize = request.volumeKeySize;
        format.dataOffset = dataOffset;
        format.sectorSize = sectorSize;
        format.volumeName = request.volumeName;
        if (auto error = image.format(format, volumeKey, password, m_environment.derivation))
            return error;
    }

    m_out.phase(QStringLiteral("Formatting…"));
    m_out.percent(50);
    if (auto error = formatPayload(file.path(), volumeKey, request.volumeName))
        return error;

    m_out.phase(QStringLiteral("Finishing…"));
    m_out.percent(90);
    if (auto error = file.commit(request.target))
        return error;
    m_out.percent(100);
    return std::nullopt;
}

KVImageResult KVCreateCommand::formatPayload(const QString &image, const KVSecureBytes &volumeKey,
                                             const QString &volumeName)
{
    const KVAttachmentRegistry *records = registry();
    if (!records)
        return KVImageError::fromErrno(EACCES);
    KVLuksImage header(image);
    if (auto error = header.load())
        return error;
    KVOfflinePayload payload(*records, m_environment.imagefs);
    if (auto error = payload.open(header, volumeKey, false))
        return error;
    if (auto error = KVExt4::format(payload.path(), KVExt4::labelFor(volumeName), getuid(), getgid()))
        return error;
    return payload.close();
}

void KVCreateCommand::printFailure(const KVImageError &error) const
{
    const int code = KVToolOutput::unambiguousCode(error.code(), {2, 17});
    if (m_out.isVerbose())
        m_out.error(QStringLiteral("DIHLDiskImageCreate() returned %1").arg(code));
    m_out.verbose(QStringLiteral("hdiutil: create: returning %1").arg(code));
    m_out.error(QStringLiteral("hdiutil: create failed - ") + error.reason());
}

} // namespace kvlinux
