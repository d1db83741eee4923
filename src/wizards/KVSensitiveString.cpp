#include "KVSensitiveString.h"

#include <string.h>

void kvWipeString(QString &text)
{
    if (text.isEmpty())
        return;
    // data() detaches first, so only this copy's buffer is overwritten.
    explicit_bzero(text.data(), size_t(text.size()) * sizeof(QChar));
    text = QString();
}

KVSensitiveString::KVSensitiveString(const QString &text)
    : m_text(text)
{
    m_text.detach();
}

KVSensitiveString::~KVSensitiveString()
{
    wipe();
}

KVSensitiveString::KVSensitiveString(KVSensitiveString &&other) noexcept
    : m_text(std::move(other.m_text))
{
}

KVSensitiveString &KVSensitiveString::operator=(KVSensitiveString &&other) noexcept
{
    if (this != &other) {
        wipe();
        m_text = std::move(other.m_text);
    }
    return *this;
}
