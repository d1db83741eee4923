#pragma once

#include <QByteArray>
#include <QString>

// The bytes of a password on their way to a tool's standard input.
//
// A secret is converted to UTF-8 once, when an operation takes its copy of the
// password, and is never copied again (move-only), so there is exactly one
// buffer to wipe. It is wiped as soon as it has been written to the tool, and
// in any case when it is destroyed.
class KVSecret
{
public:
    KVSecret() = default;
    explicit KVSecret(const QString &password);
    ~KVSecret();

    KVSecret(KVSecret &&other) noexcept;
    KVSecret &operator=(KVSecret &&other) noexcept;
    KVSecret(const KVSecret &) = delete;
    KVSecret &operator=(const KVSecret &) = delete;

    // Two passwords in one buffer with a separator between them and nothing
    // after the second ("old NUL new" for hdiutil, "old LF new" for diskutil).
    static KVSecret joined(const QString &first, char separator, const QString &second);

    const char *data() const { return m_bytes.constData(); }
    qsizetype size() const { return m_bytes.size(); }
    bool isEmpty() const { return m_bytes.isEmpty(); }

    void wipe();

private:
    QByteArray m_bytes;
};
