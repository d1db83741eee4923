#pragma once

#include "KVPropertyList.h"

#include <QHash>
#include <QList>
#include <QVariantMap>

#include <functional>

// Writes a keyed archive: the binary property list in which Cocoa keeps object
// graphs ("$archiver", "$version", "$top" and the "$objects" table, with UIDs
// as references). An object reached twice is written once, so shared objects
// and cycles keep their identity.
class KVKeyedArchiver
{
public:
    // The fields of one object being written.
    class Fields
    {
    public:
        void encodeString(const QString &key, const QString &value);
        void encodeBool(const QString &key, bool value);
        void encodeData(const QString &key, const QByteArray &value);
        void encodeObject(const QString &key, KVPropertyListUid reference);

    private:
        friend class KVKeyedArchiver;
        explicit Fields(KVKeyedArchiver &archiver) : m_archiver(archiver) {}
        KVKeyedArchiver &m_archiver;
        QVariantMap m_values;
    };

    KVKeyedArchiver();

    // An object of a class of ours, identified by `identity`: written on its
    // first encounter (its reference is known before its fields are, so a
    // field may refer back to it), referred to afterwards.
    KVPropertyListUid encodeObject(const void *identity, const QStringList &classHierarchy,
                                   const std::function<void(Fields &)> &encodeFields);
    KVPropertyListUid encodeArray(const QList<KVPropertyListUid> &elements);

    QByteArray archive(KVPropertyListUid root) const;

private:
    KVPropertyListUid append(const QVariant &object);
    KVPropertyListUid classReference(const QStringList &classHierarchy);

    QVariantList m_objects;
    QHash<const void *, KVPropertyListUid> m_written;
    QHash<QString, KVPropertyListUid> m_classes;
};

// Reads a keyed archive written by KVKeyedArchiver or by Cocoa.
class KVKeyedUnarchiver
{
public:
    // Nothing when the data is not a keyed archive this program can read
    // (including one from a later archive version).
    static std::optional<KVKeyedUnarchiver> fromData(const QByteArray &data);

    std::optional<KVPropertyListUid> root() const { return m_root; }
    QString className(KVPropertyListUid reference) const;
    // The stored fields of an object, and its plain values.
    QVariantMap fields(KVPropertyListUid reference) const;
    QVariant object(KVPropertyListUid reference) const;
    // The elements of an array object; nothing when it is not an array.
    std::optional<QList<KVPropertyListUid>> arrayElements(KVPropertyListUid reference) const;

    static std::optional<KVPropertyListUid> referenceIn(const QVariantMap &fields, const QString &key);

private:
    QVariantList m_objects;
    std::optional<KVPropertyListUid> m_root;
};
