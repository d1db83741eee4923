// Reading the conversion state from `diskutil cs list` must stay linear in the
// size of the listing: times a listing of 1,000 and one of 10,000 logical
// volumes (each in a group of its own, as diskutil prints them) and prints the
// ratio, which should stay near 10.

#include "disk/KVConversionStatusParser.h"

#include <QElapsedTimer>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

QString uuid(int group, int part)
{
    return QStringLiteral("%1-%2-4%3-8%4-%5")
        .arg(group, 8, 16, QLatin1Char('0'))
        .arg(part, 4, 16, QLatin1Char('0'))
        .arg(group % 0x1000, 3, 16, QLatin1Char('0'))
        .arg(part % 0x1000, 3, 16, QLatin1Char('0'))
        .arg(qint64(group) * 7919, 12, 16, QLatin1Char('0'))
        .toUpper();
}

// One group as diskutil prints it; all but the last carry the tree's "|   " column.
QString group(int index, bool last, bool converting)
{
    const QString column = last ? QStringLiteral("    ") : QStringLiteral("|   ");
    QString text = QStringLiteral("+-- Logical Volume Group ") + uuid(index, 1) + u'\n';
    const QStringList lines{
        QStringLiteral("========================================================="),
        QStringLiteral("Name:         Volume %1").arg(index),
        QStringLiteral("Status:       Online"),
        QStringLiteral("Size:         249715376128 B (249.7 GB)"),
        QStringLiteral("Free Space:   18890752 B (18.9 MB)"),
        QStringLiteral("|"),
        QStringLiteral("+-< Physical Volume ") + uuid(index, 2),
        QStringLiteral("|   ----------------------------------------------------"),
        QStringLiteral("|   Index:    0"),
        QStringLiteral("|   Disk:     disk%1s2").arg(index),
        QStringLiteral("|   Status:   Online"),
        QStringLiteral("|   Size:     249715376128 B (249.7 GB)"),
        QStringLiteral("|"),
        QStringLiteral("+-> Logical Volume Family ") + uuid(index, 3),
        QStringLiteral("    ----------------------------------------------------------"),
        QStringLiteral("    Encryption Type:         AES-XTS"),
        QStringLiteral("    Encryption Status:       Unlocked"),
        QStringLiteral("    Conversion Status:       ") + (converting ? QStringLiteral("Converting (forward)") : QStringLiteral("Complete")),
        QStringLiteral("    High Level Queries:      Fully Secure"),
        QStringLiteral("    |                        Passphrase Required"),
        QStringLiteral("    |                        Has Volume Key"),
        QStringLiteral("    |"),
        QStringLiteral("    +-> Logical Volume ") + uuid(index, 4),
        QStringLiteral("        ---------------------------------------------------"),
        QStringLiteral("        Disk:                  disk%1").arg(index + 1),
        QStringLiteral("        Status:                Online"),
        QStringLiteral("        Size (Total):          249344163840 B (249.3 GB)"),
        QStringLiteral("        Conversion Progress:   ") + (converting ? QStringLiteral("%1%").arg(index % 100) : QStringLiteral("Complete")),
        QStringLiteral("        Revertible:            Yes (unlock and decryption required)"),
        QStringLiteral("        LV Name:               Volume %1").arg(index),
        QStringLiteral("        Volume Name:           Volume %1").arg(index),
        QStringLiteral("        Content Hint:          Apple_HFS"),
    };
    for (const QString &line : lines)
        text += column + line + u'\n';
    if (!last)
        text += QStringLiteral("|\n");
    return text;
}

QString listing(int volumes)
{
    QString text = QStringLiteral("CoreStorage logical volume groups (%1 found)\n|\n").arg(volumes);
    for (int i = 0; i < volumes; ++i)
        text += group(i, i == volumes - 1, i % 3 == 0);
    return text;
}

// Both listings must start from memory, not from the cache: the smaller one
// would otherwise stay cached between rounds and the larger could not.
void evictCaches()
{
    static std::vector<char> buffer(128 * 1024 * 1024);
    for (size_t i = 0; i < buffer.size(); i += 64)
        buffer[i] = char(buffer[i] + 1);
}

// One parse, in milliseconds.
double timeParse(const QString &text, int expectedVolumes)
{
    evictCaches();
    QElapsedTimer clock;
    clock.start();
    const QList<KVConversionStatus> statuses = KVConversionStatusParser::parse(text);
    const double elapsed = double(clock.nsecsElapsed()) / 1e6;
    if (statuses.size() != expectedVolumes) {
        std::fprintf(stderr, "parsed %lld volumes, expected %d\n", qlonglong(statuses.size()), expectedVolumes);
        std::exit(1);
    }
    return elapsed;
}

} // namespace

int main()
{
    const QString small = listing(1000);
    const QString large = listing(10000);
    // The best of several rounds, the two sizes taking turns so that both meet
    // the same load on the machine.
    double smallMs = 1e300;
    double largeMs = 1e300;
    for (int round = 0; round < 15; ++round) {
        smallMs = std::min(smallMs, timeParse(small, 1000));
        largeMs = std::min(largeMs, timeParse(large, 10000));
    }
    std::printf("cs list of  1,000 volumes (%6.1f MB as UTF-16): %8.2f ms\n", double(small.size()) * 2 / 1e6, smallMs);
    std::printf("cs list of 10,000 volumes (%6.1f MB as UTF-16): %8.2f ms\n", double(large.size()) * 2 / 1e6, largeMs);
    std::printf("ratio: %.1fx (linear: about 10x)\n", largeMs / smallMs);
    return largeMs / smallMs <= 12.0 ? 0 : 1;
}
