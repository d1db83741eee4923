#include "KVPropertyList.h"

#include "KVBinaryPropertyListKeys.h"
#include "model/KVLocalization.h"

#include <QDateTime>
#include <QTimeZone>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace {

// Property-list dates count seconds from the first instant of 2001 (UTC).
const QDateTime &referenceDate()
{
    static const QDateTime date(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    return date;
}

// Nesting deeper than this is not something a disk tool prints; refusing it
// keeps hostile input from exhausting the stack.
constexpr int MaximumDepth = 256;

struct PlistDeleter
{
    void operator()(void *node) const { plist_free(plist_t(node)); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

struct MallocDeleter
{
    void operator()(void *p) const { std::free(p); }
};

std::optional<QVariant> toVariant(plist_t node, int depth)
{
    if (depth > MaximumDepth)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return QVariant(value != 0);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return QVariant(qint64(value));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return QVariant(value);
    }
    case PLIST_STRING: {
        // With its length: a string may hold a NUL, which is the reader's to judge.
        uint64_t length = 0;
        const char *text = plist_get_string_ptr(node, &length);
        return QVariant(QString::fromUtf8(text, text ? qsizetype(length) : 0));
    }
    case PLIST_KEY: {
        // Keys holding a NUL were refused before libplist read the data.
        char *raw = nullptr;
        plist_get_key_val(node, &raw);
        std::unique_ptr<char, MallocDeleter> text(raw);
        return QVariant(QString::fromUtf8(raw ? raw : ""));
    }
    case PLIST_DATA: {
        char *raw = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &raw, &length);
        std::unique_ptr<char, MallocDeleter> bytes(raw);
        return QVariant(QByteArray(raw, qsizetype(length)));
    }
    case PLIST_DATE: {
        int32_t seconds = 0;
        int32_t microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return QVariant(referenceDate().addMSecs(qint64(seconds) * 1000 + microseconds / 1000));
    }
    case PLIST_UID: {
        uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return QVariant::fromValue(KVPropertyListUid{value});
    }
    case PLIST_ARRAY: {
        // With an iterator: looking elements up by index walks the list each time.
        QVariantList list;
        list.reserve(plist_array_get_size(node));
        plist_array_iter iterator = nullptr;
        plist_array_new_iter(node, &iterator);
        std::unique_ptr<void, MallocDeleter> iteratorOwner(iterator);
        for (;;) {
            plist_t element = nullptr;
            plist_array_next_item(node, iterator, &element);
            if (!element)
                break;
            std::optional<QVariant> item = toVariant(element, depth + 1);
            if (!item)
                return std::nullopt;
            list.append(std::move(*item));
        }
        return QVariant(list);
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        std::unique_ptr<void, MallocDeleter> iteratorOwner(iterator);
        for (;;) {
            char *rawKey = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iterator, &rawKey, &value);
            std::unique_ptr<char, MallocDeleter> key(rawKey);
            if (!value)
                break;
            std::optional<QVariant> converted = toVariant(value, depth + 1);
            if (!converted)
                return std::nullopt;
            map.insert(QString::fromUtf8(rawKey ? rawKey : ""), std::move(*converted));
        }
        // XML property lists write a UID as a one-entry dictionary.
        const auto uid = map.constFind(QStringLiteral("CF$UID"));
        if (map.size() == 1 && uid != map.cend() && uid->typeId() == QMetaType::LongLong)
            return QVariant::fromValue(KVPropertyListUid{quint64(uid->toLongLong())});
        return QVariant(map);
    }
    default:
        return std::nullopt;
    }
}

plist_t toNode(const QVariant &value)
{
    if (value.metaType() == QMetaType::fromType<KVPropertyListUid>())
        return plist_new_uid(value.value<KVPropertyListUid>().value);
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return plist_new_uint(uint64_t(value.toLongLong()));
    case QMetaType::Double:
    case QMetaType::Float:
        return plist_new_real(value.toDouble());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), uint64_t(bytes.size()));
    }
    case QMetaType::QDateTime: {
        const qint64 ms = referenceDate().msecsTo(value.toDateTime());
        return plist_new_date(int32_t(ms / 1000), int32_t((ms % 1000) * 1000));
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        plist_t array = plist_new_array();
        for (const QVariant &item : value.toList())
            plist_array_append_item(array, toNode(item));
        return array;
    }
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            plist_dict_set_item(dict, it.key().toUtf8().constData(), toNode(it.value()));
        return dict;
    }
    default:
        return plist_new_string(value.toString().toUtf8().constData());
    }
}

template<typename Writer>
QByteArray encode(const QVariant &value, Writer writer)
{
    PlistPtr root(toNode(value));
    char *raw = nullptr;
    uint32_t length = 0;
    writer(plist_t(root.get()), &raw, &length);
    std::unique_ptr<char, MallocDeleter> owner(raw);
    return QByteArray(raw, qsizetype(length));
}

} // namespace

std::optional<QVariant> KVPropertyList::decode(const QByteArray &data, KVPropertyListError *error)
{
    plist_t rawRoot = nullptr;
    if (!data.isEmpty() && data.size() <= std::numeric_limits<uint32_t>::max()
        && !KVBinaryPropertyListKeys::anyKeyHoldsNul(data))
        plist_from_memory(data.constData(), uint32_t(data.size()), &rawRoot);
    PlistPtr root(rawRoot);
    std::optional<QVariant> value = root ? toVariant(plist_t(root.get()), 0) : std::nullopt;
    if (!value && error) {
        error->code = ReadCorruptError;
        error->description =
            KVLocalization::tr("The data couldn’t be read because it isn’t in the correct format.");
    }
    return value;
}

QByteArray KVPropertyList::encodeBinary(const QVariant &value)
{
    return encode(value, plist_to_bin);
}

QByteArray KVPropertyList::encodeXml(const QVariant &value)
{
    return encode(value, plist_to_xml);
}
