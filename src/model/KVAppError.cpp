#include "KVAppError.h"

KVAppError::KVAppError(QString domain, int code, QString description, QString message)
    : m_domain(std::move(domain))
    , m_code(code)
    , m_description(std::move(description))
    , m_failureReason(message)
    , m_recoverySuggestion(std::move(message))
{
}

KVAppError::KVAppError(KVAppErrorCode code, QString description, QString message)
    : KVAppError(KVAppErrorDomain, static_cast<int>(code), std::move(description), std::move(message))
{
}

QString KVAppError::debugDescription() const
{
    return QStringLiteral("Error Domain=%1 Code=%2 \"%3\" UserInfo={NSLocalizedFailureReason=%4}")
        .arg(m_domain)
        .arg(m_code)
        .arg(m_description, m_failureReason);
}
