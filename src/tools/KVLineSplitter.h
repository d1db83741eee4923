#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <functional>

// Cuts a tool's output, arriving in chunks of any size, into lines of text.
//
// The bytes are read as UTF-8. A character cut off at the end of a chunk waits
// for the next one, and whatever does not decode reads as U+FFFD, so the lines
// are the same however the output was divided: in particular a line end that
// follows a broken character is never swallowed by it. Lines end at LF, VT,
// FF, CR, NEL and the Unicode line and paragraph separators; an unended last
// fragment is never handed on.
class KVLineSplitter
{
public:
    // `chunkFromLine` is the text that arrived with the line, from the line's start on.
    using LineHandler = std::function<void(const QString &line, QStringView chunkFromLine)>;

    explicit KVLineSplitter(LineHandler handler);

    void feed(QByteArrayView bytes);

    // How many bytes at the end of `bytes` begin a character that is not complete yet.
    static qsizetype incompleteTail(QByteArrayView bytes);

private:
    // The text of the pending bytes and `bytes`, up to the last whole character.
    QString completeText(QByteArrayView bytes);

    LineHandler m_handler;
    QByteArray m_pendingBytes;
    QString m_partialLine;
};
