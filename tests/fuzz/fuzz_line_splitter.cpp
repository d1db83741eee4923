// A tool's output cut into lines while it arrives: the same bytes divided
// into chunks of sizes chosen by the input's first byte must give the same
// lines as the bytes in one piece, and no line may hold a line end.

#include "tools/KVLineSplitter.h"

#include <QStringList>

#include <cstddef>
#include <cstdint>

namespace {

bool holdsLineEnd(const QString &line)
{
    for (QChar c : line) {
        const char16_t u = c.unicode();
        if ((u >= 0x0A && u <= 0x0D) || u == 0x85 || u == 0x2028 || u == 0x2029)
            return true;
    }
    return false;
}

QStringList linesOf(QByteArrayView output, quint32 seed)
{
    QStringList lines;
    KVLineSplitter splitter([&lines](const QString &line, QStringView chunkFromLine) {
        if (holdsLineEnd(line) || chunkFromLine.isEmpty())
            __builtin_trap();
        lines.append(line);
    });
    if (seed == 0) {
        splitter.feed(output);
        return lines;
    }
    // Chunks of 1 to 8 bytes, in an order the seed decides.
    while (!output.isEmpty()) {
        seed = seed * 1103515245u + 12345u;
        const qsizetype length = std::min<qsizetype>(output.size(), 1 + (seed >> 16) % 8);
        splitter.feed(output.first(length));
        output = output.sliced(length);
    }
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const QByteArrayView output(reinterpret_cast<const char *>(data) + 1, qsizetype(size - 1));
    if (linesOf(output, 0) != linesOf(output, quint32(data[0]) + 1))
        __builtin_trap();
    return 0;
}
