#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <optional>

struct KVPropertyListError
{
    int code = 0;
    QString description;
};

// A reference to another object of a keyed archive.
struct KVPropertyListUid
{
    quint64 value = 0;
    bool operator==(const KVPropertyListUid &) const = default;
};
Q_DECLARE_METATYPE(KVPropertyListUid)

// Property lists, XML or binary, as Qt values: dictionaries become QVariantMap,
// arrays QVariantList, strings QString, data QByteArray, integers qint64,
// reals double, booleans bool, dates QDateTime, UIDs KVPropertyListUid.
class KVPropertyList
{
public:
    // The code Foundation gives to data that is not a readable property list.
    static constexpr int ReadCorruptError = 3840;

    static std::optional<QVariant> decode(const QByteArray &data, KVPropertyListError *error = nullptr);
    static QByteArray encodeBinary(const QVariant &value);
    static QByteArray encodeXml(const QVariant &value);
};
