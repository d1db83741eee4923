#include "KVToolOutput.h"

#include <cerrno>
#include <unistd.h>

namespace kvlinux {

void KVToolOutput::write(int fd, const QByteArray &text)
{
    // Readers of these texts take them for C strings (libplist asserts on a
    // NUL inside one): whatever slipped through, a NUL is never printed.
    QByteArray bytes = text;
    bytes.replace('\0', QByteArray());
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;
        done += n;
    }
}

void KVToolOutput::line(const QString &text) const
{
    write(STDOUT_FILENO, text.toUtf8() + '\n');
}

void KVToolOutput::error(const QString &text) const
{
    write(STDERR_FILENO, text.toUtf8() + '\n');
}

void KVToolOutput::verbose(const QString &text) const
{
    if (m_verbose)
        line(text);
}

void KVToolOutput::data(const QByteArray &bytes) const
{
    write(STDOUT_FILENO, bytes);
}

void KVToolOutput::phase(const QString &text) const
{
    if (m_puppetStrings)
        line(QStringLiteral("MESSAGE:") + text);
    else
        verbose(text);
}

void KVToolOutput::percent(double value) const
{
    if (m_puppetStrings)
        line(QStringLiteral("PERCENT:") + QString::number(value, 'f', 6));
}

int KVToolOutput::unambiguousCode(int code, std::initializer_list<int> recognised)
{
    constexpr int internalError = 999;
    const QString text = QString::number(code);
    for (int known : recognised)
        if (code != known && text.startsWith(QString::number(known)))
            return internalError;
    return code;
}

void KVToolOutput::result(const QString &verb, int code, std::initializer_list<int> recognised) const
{
    error(QStringLiteral("hdiutil: %1: result: %2").arg(verb).arg(unambiguousCode(code, recognised)));
}

} // namespace kvlinux
