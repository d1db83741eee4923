#pragma once

#include <QMetaType>
#include <QString>

#include <optional>

// Failures recognised in a tool's own output carry this domain.
inline const QString KVAppErrorDomain = QStringLiteral("korvelle.Korvelle");
// Everything else: abnormal exits, unreadable or undecodable output, system calls.
inline const QString NSCocoaErrorDomain = QStringLiteral("NSCocoaErrorDomain");

// The codes of the application's own domain. Callers tell only WrongPassword
// and InvalidMountPath apart; every other code ends up in an alert.
enum class KVAppErrorCode : int {
    WrongPassword = 10,
    NotFound = 20,            // image, volume or path does not exist
    FileExists = 25,
    InvalidMountPath = 30,    // images
    VolumeNotLocked = 30,     // disks
    ResourceBusy = 40,
    NoPath = 50,
    ImageMounted = 60,
    ToolMessage = 100,        // a tool text not otherwise recognised; the text is the message
    DiskNotFound = 150,
    FileSystemNotSupported = 160,
    DiskInUseByCoreStorage = 170,
    InvalidVolumeName = 180,
    NotAValidVolume = 190,
    NoMountPoint = 200,
};

// An error value. The failure reason and the recovery suggestion deliberately
// carry the same message: alerts show the description as their headline and
// the suggestion beneath it.
class KVAppError
{
public:
    KVAppError() = default;
    KVAppError(QString domain, int code, QString description, QString message);
    // An error of the application's own domain.
    KVAppError(KVAppErrorCode code, QString description, QString message);

    const QString &domain() const { return m_domain; }
    int code() const { return m_code; }
    const QString &localizedDescription() const { return m_description; }
    const QString &localizedFailureReason() const { return m_failureReason; }
    const QString &localizedRecoverySuggestion() const { return m_recoverySuggestion; }

    // True for the application's own error with the given code; callers tell a
    // wrong password and an invalid mount path apart this way.
    bool is(KVAppErrorCode code) const { return m_domain == KVAppErrorDomain && m_code == static_cast<int>(code); }

    // The one-line form used in log lines.
    QString debugDescription() const;

    bool operator==(const KVAppError &) const = default;

private:
    QString m_domain;
    int m_code = 0;
    QString m_description;
    QString m_failureReason;
    QString m_recoverySuggestion;
};

// What every engine operation hands its completion: an error, or nothing on success.
using KVOptionalError = std::optional<KVAppError>;

Q_DECLARE_METATYPE(KVAppError)
