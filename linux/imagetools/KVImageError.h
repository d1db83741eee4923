#pragma once

#include <QString>

#include <optional>

namespace kvlinux {

// A failure as hdiutil reports it: a number in the macOS errno space (the one
// the application's texts use: 80 authentication, 35 resource temporarily
// unavailable, 112 no mountable file systems...) and hdiutil's text for it.
class KVImageError
{
public:
    enum Code {
        NoSuchFile = 2,
        Busy = 16,
        Exists = 17,
        InvalidArgument = 22,
        NoSpace = 28,
        TryAgain = 35,     // macOS EAGAIN: "in use", for resize and compact
        NotSupported = 45, // macOS ENOTSUP
        Authentication = 80,
        NoMountableFileSystems = 112,
        ImageNotRecognized = 1000,
        Damaged = 1001,    // the header is there, but what it points to is not
    };

    KVImageError(int code, QString reason);
    explicit KVImageError(Code code);

    // A Linux errno, renumbered where macOS differs.
    static KVImageError fromErrno(int linuxErrno);

    int code() const { return m_code; }
    const QString &reason() const { return m_reason; }

    bool operator==(const KVImageError &) const = default;

private:
    int m_code;
    QString m_reason;
};

using KVImageResult = std::optional<KVImageError>;

} // namespace kvlinux
