#include "KVDisplayText.h"

#include <QList>
#include <QTextBoundaryFinder>

namespace {

constexpr QChar Ellipsis(0x2026);
constexpr QChar FirstStrongIsolate(0x2068);
constexpr QChar PopDirectionalIsolate(0x2069);

// Embeddings, overrides and isolates, and the characters that end them. They
// are dropped rather than balanced: they are invisible, they are how a file
// name is made to read backwards ("photo\u202Egpj.exe"), and a name cut in the
// middle or put into a sentence could leave one open. The letters' own
// direction still orders a right-to-left name correctly without them.
bool isDirectionalFormatting(char16_t c)
{
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

bool isLineOrTab(char16_t c)
{
    return c == u'\n' || c == u'\r' || c == u'\t' || c == u'\v' || c == u'\f' || c == 0x85 || c == 0x2028
           || c == 0x2029;
}

bool isOtherControl(char16_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}

bool hasRightToLeftLetter(const QString &text)
{
    for (const QChar c : text) {
        const QChar::Direction direction = c.direction();
        if (direction == QChar::DirR || direction == QChar::DirAL)
            return true;
    }
    return false;
}

} // namespace

QString KVDisplayText::singleLine(const QString &text)
{
    QString shown;
    shown.reserve(text.size());
    bool afterSpace = false;
    for (const QChar c : text) {
        const char16_t code = c.unicode();
        if (isDirectionalFormatting(code))
            continue;
        // "a\r\nb" reads "a b": a run of breaks is one gap between words.
        if (isLineOrTab(code)) {
            if (!afterSpace)
                shown.append(u' ');
            afterSpace = true;
            continue;
        }
        afterSpace = false;
        shown.append(isOtherControl(code) ? QChar(QChar::ReplacementCharacter) : c);
    }
    return shown;
}

QString KVDisplayText::shortened(const QString &text, qsizetype maximumLength)
{
    const QString shown = singleLine(text);
    // Cut between characters as the user sees them, never inside an emoji or
    // between a letter and its accent.
    QList<qsizetype> boundaries;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, shown);
    for (qsizetype at = finder.toNextBoundary(); at > 0; at = finder.toNextBoundary())
        boundaries.append(at);
    const qsizetype characters = boundaries.size();
    if (characters <= maximumLength || maximumLength < 2)
        return shown;
    const qsizetype kept = maximumLength - 1;
    const qsizetype head = (kept + 1) / 2;
    const qsizetype tail = kept - head;
    return shown.left(boundaries.at(head - 1)) + Ellipsis + shown.mid(boundaries.at(characters - tail - 1));
}

QString KVDisplayText::inSentence(const QString &text, qsizetype maximumLength)
{
    const QString shown = shortened(text, maximumLength);
    if (!hasRightToLeftLetter(shown))
        return shown;
    return FirstStrongIsolate + shown + PopDirectionalIsolate;
}

QString KVDisplayText::inMenu(const QString &text)
{
    return inSentence(text).replace(u'&', QStringLiteral("&&"));
}
