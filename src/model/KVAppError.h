#pragma once

#include <QMetaType>
#include <QString>

#include <optional>

// Failures recognised in a tool's own output carry this domain.
inline const QString KVAppErrorDomain = QStringLiteral("korvelle.Korvelle");
// Everything else: abnormal exits, unreadable or undecodable output, system calls.
inline const QString NSCocoaErrorDomain = QStringLiteral("NSCocoaErrorDomain");

// An error value. The failure reason and the recovery suggestion deliberately
// carry the same message: alerts show the description as their headline and
// the suggestion beneath it.
class KVAppError
{
public:
    KVAppError() = default;
    KVAppError(QString domain, int code, QString description, QString message);

    const QString &domain() const { return m_domain; }
    int code() const { return m_code; }
    const QString &localizedDescription() const { return m_description; }
    const QString &localizedFailureReason() const { return m_failureReason; }
    const QString &localizedRecoverySuggestion() const { return m_recoverySuggestion; }

    // True for the application's own error with the given code; callers tell a
    // wrong password (10) and an invalid mount path (30) apart this way.
    bool is(int code) const { return m_domain == KVAppErrorDomain && m_code == code; }

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
