#include "KVValue.h"

#include <cmath>
#include <limits>

namespace KVValue {

namespace {

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

// Skips blanks and an optional sign; returns the index of the first digit candidate.
qsizetype skipBlanksAndSign(const QString &text, bool *negative)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    *negative = false;
    if (i < text.size() && (text.at(i) == u'+' || text.at(i) == u'-')) {
        *negative = text.at(i) == u'-';
        ++i;
    }
    return i;
}

} // namespace

bool boolValue(const QVariant &value)
{
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        bool negative = false;
        qsizetype i = skipBlanksAndSign(text, &negative);
        while (i < text.size() && text.at(i) == u'0')
            ++i;
        if (i >= text.size())
            return false;
        const char16_t c = text.at(i).unicode();
        return c == u'Y' || c == u'y' || c == u'T' || c == u't' || (c >= u'1' && c <= u'9');
    }
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float)
        return value.toDouble() != 0.0;
    return isNumber(value) && value.toLongLong() != 0;
}

qint64 integerValue(const QVariant &value)
{
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        bool negative = false;
        qsizetype i = skipBlanksAndSign(text, &negative);
        quint64 magnitude = 0;
        constexpr quint64 limit = quint64(std::numeric_limits<qint64>::max());
        for (; i < text.size() && text.at(i).isDigit() && text.at(i).unicode() < 0x80; ++i) {
            // Checked before the step, which could otherwise wrap past 2^64.
            const quint64 digit = quint64(text.at(i).unicode() - u'0');
            if (magnitude > (limit - digit) / 10)
                return negative ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
            magnitude = magnitude * 10 + digit;
        }
        return negative ? -qint64(magnitude) : qint64(magnitude);
    }
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float) {
        const double d = value.toDouble();
        if (!std::isfinite(d) || std::abs(d) >= 9.2e18)
            return 0;
        return qint64(d);
    }
    return isNumber(value) ? value.toLongLong() : 0;
}

QString stringValue(const QVariant &value)
{
    if (value.typeId() == QMetaType::QString)
        return value.toString();
    if (isNumber(value) && value.typeId() != QMetaType::Bool)
        return value.toString();
    return QString();
}

QString nameValue(const QVariant &value)
{
    QString text = stringValue(value);
    const qsizetype nul = text.indexOf(QChar(0));
    if (nul >= 0)
        text.truncate(nul);
    return text;
}

QString pathValue(const QVariant &value)
{
    const QString text = stringValue(value);
    return text.contains(QChar(0)) ? QString() : text;
}

QVariantMap dictionary(const QVariant &value)
{
    return value.typeId() == QMetaType::QVariantMap ? value.toMap() : QVariantMap();
}

QVariantList array(const QVariant &value)
{
    return value.typeId() == QMetaType::QVariantList ? value.toList() : QVariantList();
}

QVariantMap firstDictionary(const QVariant &value)
{
    const QVariantList list = array(value);
    return list.isEmpty() ? QVariantMap() : dictionary(list.first());
}

} // namespace KVValue
