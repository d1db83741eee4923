#pragma once

#include <QString>

#include <optional>

namespace kvlinux {

// hdiutil's size notation, in the style of mkfile: a number with an optional
// unit, b (512-byte sectors), k, m, g, t (binary multiples); a bare number
// counts sectors. Fractions are allowed ("1.5m"). Returns bytes.
class KVSizeArgument
{
public:
    static std::optional<quint64> parse(const QString &text);
};

} // namespace kvlinux
