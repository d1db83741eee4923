#include "KVLineSplitter.h"

namespace {

bool isNewline(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x0A && u <= 0x0D) || u == 0x85 || u == 0x2028 || u == 0x2029;
}

qsizetype indexOfNewline(const QString &text, qsizetype from)
{
    const QChar *data = text.constData();
    for (qsizetype i = from, n = text.size(); i < n; ++i) {
        if (isNewline(data[i]))
            return i;
    }
    return -1;
}

// The length of the character a UTF-8 lead byte begins; 0 for bytes that begin none.
int sequenceLength(uchar lead)
{
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    if (lead >= 0xF0 && lead <= 0xF4)
        return 4;
    return 0;
}

bool isContinuation(uchar byte)
{
    return (byte & 0xC0) == 0x80;
}

} // namespace

KVLineSplitter::KVLineSplitter(LineHandler handler)
    : m_handler(std::move(handler))
{
}

qsizetype KVLineSplitter::incompleteTail(QByteArrayView bytes)
{
    // A character is at most four bytes long: its lead byte is among the last three.
    const qsizetype size = bytes.size();
    for (qsizetype tail = 1; tail <= std::min<qsizetype>(3, size); ++tail) {
        const uchar byte = uchar(bytes[size - tail]);
        if (isContinuation(byte))
            continue;
        return sequenceLength(byte) > tail ? tail : 0;
    }
    return 0;
}

QString KVLineSplitter::completeText(QByteArrayView bytes)
{
    // Most chunks follow one that ended on a whole character: no copy then.
    if (!m_pendingBytes.isEmpty()) {
        m_pendingBytes.append(bytes);
        bytes = m_pendingBytes;
    }
    const qsizetype complete = bytes.size() - incompleteTail(bytes);
    QString text = QString::fromUtf8(bytes.first(complete));
    m_pendingBytes = bytes.sliced(complete).toByteArray();
    return text;
}

void KVLineSplitter::feed(QByteArrayView bytes)
{
    const QString chunk = completeText(bytes);

    qsizetype start = 0;
    for (qsizetype newline = indexOfNewline(chunk, 0); newline >= 0; newline = indexOfNewline(chunk, start)) {
        const QString line = m_partialLine.isEmpty()
            ? chunk.mid(start, newline - start)
            : m_partialLine + QStringView(chunk).sliced(start, newline - start);
        m_partialLine.clear();
        m_handler(line, QStringView(chunk).sliced(start));
        start = newline + 1;
    }
    m_partialLine += QStringView(chunk).sliced(start);
}
