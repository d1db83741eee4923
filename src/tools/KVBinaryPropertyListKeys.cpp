#include "KVBinaryPropertyListKeys.h"

#include <QList>

#include <optional>

namespace {

constexpr qsizetype HeaderSize = 8;
constexpr qsizetype TrailerSize = 32;

// Object markers: the high four bits give the type, the low four a count
// (0xF: the count follows as an integer object).
constexpr uchar IntegerType = 0x1;
constexpr uchar AsciiStringType = 0x5;
constexpr uchar Utf16StringType = 0x6;
constexpr uchar DictionaryType = 0xD;

class ObjectTable
{
public:
    explicit ObjectTable(QByteArrayView data) : m_data(data) {}

    bool readTrailer()
    {
        if (m_data.size() < HeaderSize + TrailerSize || !m_data.startsWith("bplist00"))
            return false;
        const qsizetype trailer = m_data.size() - TrailerSize;
        m_offsetSize = int(uchar(m_data[trailer + 6]));
        m_referenceSize = int(uchar(m_data[trailer + 7]));
        const std::optional<quint64> count = number(trailer + 8, 8);
        const std::optional<quint64> tableOffset = number(trailer + 24, 8);
        if (m_offsetSize < 1 || m_referenceSize < 1 || !count
            || !tableOffset || *tableOffset > quint64(trailer)
            || *count > (quint64(trailer) - *tableOffset) / quint64(m_offsetSize))
            return false;
        m_objectCount = qsizetype(*count);
        m_tableOffset = qsizetype(*tableOffset);
        m_end = trailer;
        return true;
    }

    qsizetype objectCount() const { return m_objectCount; }

    // Where object `index` starts; nothing when that is outside the objects.
    std::optional<qsizetype> objectAt(quint64 index) const
    {
        if (index >= quint64(m_objectCount))
            return std::nullopt;
        const std::optional<quint64> offset = number(m_tableOffset + qsizetype(index) * m_offsetSize, m_offsetSize);
        // Not only after the header: libplist takes an object from anywhere
        // before the offset table, even one that overlaps the magic.
        if (!offset || *offset >= quint64(m_end))
            return std::nullopt;
        return qsizetype(*offset);
    }

    // The type of the object at `at`, its count, and where its contents begin.
    struct Header
    {
        uchar type = 0;
        quint64 count = 0;
        qsizetype contents = 0;
    };
    std::optional<Header> header(qsizetype at) const
    {
        const uchar marker = uchar(m_data[at]);
        Header header{uchar(marker >> 4), quint64(marker & 0xF), at + 1};
        if (header.count != 0xF)
            return header;
        if (header.contents >= m_end || uchar(m_data[header.contents]) >> 4 != IntegerType)
            return std::nullopt;
        const int size = 1 << (uchar(m_data[header.contents]) & 0xF);
        const std::optional<quint64> count = number(header.contents + 1, size);
        if (!count)
            return std::nullopt;
        header.count = *count;
        header.contents += 1 + size;
        return header;
    }

    // Whether `count` items of `size` bytes fit between `at` and the trailer.
    bool fits(qsizetype at, quint64 count, int size) const
    {
        return at <= m_end && count <= quint64(m_end - at) / quint64(size);
    }

    // A big-endian number of `size` bytes at `at`. Of a wider one libplist
    // reads the last eight bytes, and so does this.
    std::optional<quint64> number(qsizetype at, int size) const
    {
        if (at < 0 || at > m_data.size() - size)
            return std::nullopt;
        quint64 value = 0;
        for (int i = qMax(0, size - 8); i < size; ++i)
            value = (value << 8) | uchar(m_data[at + i]);
        return value;
    }

    uchar byte(qsizetype at) const { return uchar(m_data[at]); }
    int referenceSize() const { return m_referenceSize; }

private:
    QByteArrayView m_data;
    int m_offsetSize = 0;
    int m_referenceSize = 0;
    qsizetype m_objectCount = 0;
    qsizetype m_tableOffset = 0;
    qsizetype m_end = 0;
};

bool stringHoldsNul(const ObjectTable &table, quint64 index)
{
    const std::optional<qsizetype> at = table.objectAt(index);
    const std::optional<ObjectTable::Header> header = at ? table.header(*at) : std::nullopt;
    if (!header || (header->type != AsciiStringType && header->type != Utf16StringType))
        return false;
    const int unit = header->type == Utf16StringType ? 2 : 1;
    if (!table.fits(header->contents, header->count, unit))
        return false;
    for (quint64 i = 0; i < header->count; ++i) {
        const qsizetype position = header->contents + qsizetype(i) * unit;
        if (table.byte(position) == 0 && (unit == 1 || table.byte(position + 1) == 0))
            return true;
    }
    return false;
}

} // namespace

bool KVBinaryPropertyListKeys::anyKeyHoldsNul(QByteArrayView data)
{
    ObjectTable table(data);
    if (!table.readTrailer())
        return false;
    QList<bool> looked(table.objectCount(), false);
    for (qsizetype object = 0; object < table.objectCount(); ++object) {
        const std::optional<qsizetype> at = table.objectAt(quint64(object));
        const std::optional<ObjectTable::Header> header = at ? table.header(*at) : std::nullopt;
        if (!header || header->type != DictionaryType || !table.fits(header->contents, header->count, table.referenceSize()))
            continue;
        for (quint64 i = 0; i < header->count; ++i) {
            const std::optional<quint64> key =
                table.number(header->contents + qsizetype(i) * table.referenceSize(), table.referenceSize());
            if (!key || *key >= quint64(table.objectCount()) || looked[qsizetype(*key)])
                continue;
            looked[qsizetype(*key)] = true;
            if (stringHoldsNul(table, *key))
                return true;
        }
    }
    return false;
}
