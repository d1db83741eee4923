#include "KVSizeArgument.h"

#include <cmath>

namespace kvlinux {

std::optional<quint64> KVSizeArgument::parse(const QString &text)
{
    QString number = text.trimmed().toLower();
    double unit = 512;
    if (!number.isEmpty() && number.back().isLetter()) {
        switch (number.back().toLatin1()) {
        case 'b': unit = 512; break;
        case 'k': unit = 1024.0; break;
        case 'm': unit = 1024.0 * 1024; break;
        case 'g': unit = 1024.0 * 1024 * 1024; break;
        case 't': unit = 1024.0 * 1024 * 1024 * 1024; break;
        default: return std::nullopt;
        }
        number.chop(1);
    }
    bool ok = false;
    const double value = number.toDouble(&ok);
    const double bytes = value * unit;
    // Less than a byte is no size at all (it would read as 0).
    if (!ok || !std::isfinite(bytes) || bytes < 1 || bytes > 9.0e18)
        return std::nullopt;
    return quint64(bytes);
}

} // namespace kvlinux
