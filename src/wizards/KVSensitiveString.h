#pragma once

#include <QString>

// Overwrites the characters of `text` (its own copy, if it shared one) and
// empties it. For passwords that a dialog holds between two engine calls.
void kvWipeString(QString &text);

// A password held by a piece of work that outlives the dialog's call, wiped
// when the work no longer needs it and, at the latest, when it is destroyed.
class KVSensitiveString
{
public:
    KVSensitiveString() = default;
    explicit KVSensitiveString(const QString &text);
    ~KVSensitiveString();

    KVSensitiveString(KVSensitiveString &&other) noexcept;
    KVSensitiveString &operator=(KVSensitiveString &&other) noexcept;
    KVSensitiveString(const KVSensitiveString &) = delete;
    KVSensitiveString &operator=(const KVSensitiveString &) = delete;

    const QString &value() const { return m_text; }
    void wipe() { kvWipeString(m_text); }

private:
    QString m_text;
};
