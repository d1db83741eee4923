#include "KVConversionStatusParser.h"

#include <QRegularExpression>

namespace {

// diskutil's own consumers match with ICU, whose `.` stops at any line break
// and whose `\s` takes any Unicode blank; "(*ANY)" and Unicode properties make
// PCRE agree. The patterns are built per listing rather than shared, so that
// two engines may parse at the same time.
struct Patterns
{
    static QRegularExpression compile(const QString &pattern)
    {
        QRegularExpression expression(QStringLiteral("(*ANY)") + pattern,
                                      QRegularExpression::UseUnicodePropertiesOption);
        expression.optimize();
        return expression;
    }

    const QRegularExpression volume = compile(QStringLiteral(R"(\+->\sLogical Volume\s(?!Family)(.*))"));
    const QRegularExpression status = compile(QStringLiteral("Conversion Status:\\s*(.*?)(\\s\\((.*)\\))?\n"));
    const QRegularExpression direction = compile(QStringLiteral(R"(Conversion Direction:\s*(.*))"));
    const QRegularExpression progress = compile(QStringLiteral("Conversion Progress:\\s*(.*?)%?\n"));
};

} // namespace

QList<KVConversionStatus> KVConversionStatusParser::parse(QStringView listing)
{
    const Patterns patterns;
    QList<KVConversionStatus> statuses;
    // Piece by piece, so that each piece is searched while it is still in the cache.
    for (QStringView chunk : listing.tokenize(u"|\n+--")) {
        KVConversionStatus volume;
        volume.lvUUID = patterns.volume.match(chunk).captured(1);
        if (volume.lvUUID.size() < 2)
            continue;

        const QRegularExpressionMatch status = patterns.status.match(chunk);
        volume.status = status.captured(1);
        volume.conversionDirection = status.hasCaptured(3) ? status.captured(3)
                                                           : patterns.direction.match(chunk).captured(1);
        volume.conversionProgress = patterns.progress.match(chunk).captured(1);
        statuses.append(volume);
    }
    return statuses;
}
