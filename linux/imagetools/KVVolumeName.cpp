#include "KVVolumeName.h"

namespace kvlinux {

namespace {

bool isDirectionalFormatting(char32_t c)
{
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

bool isControl(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029;
}

} // namespace

QString KVVolumeName::sanitized(const QString &name)
{
    const qsizetype nul = name.indexOf(QChar(0));
    const QString text = nul < 0 ? name : name.left(nul);
    QString clean;
    clean.reserve(std::min(text.size(), maxLength));
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t c = text[i].unicode();
        qsizetype units = 1;
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(text[i], text[i + 1]);
            units = 2;
        } else if (QChar::isSurrogate(c)) {
            c = QChar::ReplacementCharacter;
        }
        if (isDirectionalFormatting(c)) {
            i += units - 1;
            continue;
        }
        if (isControl(c))
            c = U' ';
        if (clean.size() + units > maxLength)
            break;
        clean += units == 2 ? QString::fromUcs4(&c, 1) : QString(QChar(char16_t(c)));
        i += units - 1;
    }
    return clean;
}

QString KVVolumeName::fromUtf8(const QByteArray &bytes)
{
    return sanitized(QString::fromUtf8(bytes));
}

} // namespace kvlinux
