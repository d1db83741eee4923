#include "KVKeyedArchiver.h"

#include "KVValue.h"

namespace {

const QString Archiver = QStringLiteral("NSKeyedArchiver");
constexpr qint64 ArchiveVersion = 100000;
const QString NullObject = QStringLiteral("$null");
const QString ClassKey = QStringLiteral("$class");
const QString ArrayElementsKey = QStringLiteral("NS.objects");
const QStringList ArrayClasses{QStringLiteral("NSMutableArray"), QStringLiteral("NSArray"), QStringLiteral("NSObject")};

} // namespace

void KVKeyedArchiver::Fields::encodeString(const QString &key, const QString &value)
{
    m_values.insert(key, QVariant::fromValue(m_archiver.append(value)));
}

void KVKeyedArchiver::Fields::encodeBool(const QString &key, bool value)
{
    m_values.insert(key, value);
}

void KVKeyedArchiver::Fields::encodeData(const QString &key, const QByteArray &value)
{
    m_values.insert(key, QVariant::fromValue(m_archiver.append(value)));
}

void KVKeyedArchiver::Fields::encodeObject(const QString &key, KVPropertyListUid reference)
{
    m_values.insert(key, QVariant::fromValue(reference));
}

KVKeyedArchiver::KVKeyedArchiver()
{
    m_objects.append(NullObject);
}

KVPropertyListUid KVKeyedArchiver::append(const QVariant &object)
{
    m_objects.append(object);
    return KVPropertyListUid{quint64(m_objects.size() - 1)};
}

KVPropertyListUid KVKeyedArchiver::classReference(const QStringList &classHierarchy)
{
    const QString name = classHierarchy.first();
    auto it = m_classes.constFind(name);
    if (it != m_classes.cend())
        return *it;
    const KVPropertyListUid reference = append(QVariantMap{
        {QStringLiteral("$classname"), name},
        {QStringLiteral("$classes"), QVariant(classHierarchy)},
    });
    m_classes.insert(name, reference);
    return reference;
}

KVPropertyListUid KVKeyedArchiver::encodeObject(const void *identity, const QStringList &classHierarchy,
                                                const std::function<void(Fields &)> &encodeFields)
{
    auto it = m_written.constFind(identity);
    if (it != m_written.cend())
        return *it;
    const KVPropertyListUid reference = append(QVariant());
    m_written.insert(identity, reference);
    Fields fields(*this);
    encodeFields(fields);
    fields.m_values.insert(ClassKey, QVariant::fromValue(classReference(classHierarchy)));
    m_objects[qsizetype(reference.value)] = fields.m_values;
    return reference;
}

KVPropertyListUid KVKeyedArchiver::encodeArray(const QList<KVPropertyListUid> &elements)
{
    QVariantList references;
    for (KVPropertyListUid element : elements)
        references.append(QVariant::fromValue(element));
    const KVPropertyListUid reference = append(QVariant());
    m_objects[qsizetype(reference.value)] = QVariantMap{
        {ArrayElementsKey, references},
        {ClassKey, QVariant::fromValue(classReference(ArrayClasses))},
    };
    return reference;
}

QByteArray KVKeyedArchiver::archive(KVPropertyListUid root) const
{
    return KVPropertyList::encodeBinary(QVariantMap{
        {QStringLiteral("$archiver"), Archiver},
        {QStringLiteral("$version"), ArchiveVersion},
        {QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), QVariant::fromValue(root)}}},
        {QStringLiteral("$objects"), m_objects},
    });
}

std::optional<KVKeyedUnarchiver> KVKeyedUnarchiver::fromData(const QByteArray &data)
{
    const std::optional<QVariant> decoded = KVPropertyList::decode(data);
    if (!decoded)
        return std::nullopt;
    const QVariantMap top = KVValue::dictionary(*decoded);
    if (KVValue::stringValue(top.value(QStringLiteral("$archiver"))) != Archiver
        || KVValue::integerValue(top.value(QStringLiteral("$version"))) > ArchiveVersion)
        return std::nullopt;
    KVKeyedUnarchiver unarchiver;
    unarchiver.m_objects = KVValue::array(top.value(QStringLiteral("$objects")));
    unarchiver.m_root = referenceIn(KVValue::dictionary(top.value(QStringLiteral("$top"))), QStringLiteral("root"));
    if (!unarchiver.m_root || unarchiver.m_objects.isEmpty())
        return std::nullopt;
    return unarchiver;
}

QVariant KVKeyedUnarchiver::object(KVPropertyListUid reference) const
{
    if (reference.value == 0 || reference.value >= quint64(m_objects.size()))
        return QVariant();
    return m_objects.at(qsizetype(reference.value));
}

QVariantMap KVKeyedUnarchiver::fields(KVPropertyListUid reference) const
{
    return KVValue::dictionary(object(reference));
}

QString KVKeyedUnarchiver::className(KVPropertyListUid reference) const
{
    const std::optional<KVPropertyListUid> classRef = referenceIn(fields(reference), ClassKey);
    if (!classRef)
        return QString();
    return KVValue::stringValue(fields(*classRef).value(QStringLiteral("$classname")));
}

std::optional<QList<KVPropertyListUid>> KVKeyedUnarchiver::arrayElements(KVPropertyListUid reference) const
{
    const QString name = className(reference);
    if (name != u"NSMutableArray" && name != u"NSArray")
        return std::nullopt;
    QList<KVPropertyListUid> elements;
    for (const QVariant &element : KVValue::array(fields(reference).value(ArrayElementsKey))) {
        if (element.metaType() != QMetaType::fromType<KVPropertyListUid>())
            return std::nullopt;
        elements.append(element.value<KVPropertyListUid>());
    }
    return elements;
}

std::optional<KVPropertyListUid> KVKeyedUnarchiver::referenceIn(const QVariantMap &fields, const QString &key)
{
    const QVariant value = fields.value(key);
    if (value.metaType() != QMetaType::fromType<KVPropertyListUid>())
        return std::nullopt;
    return value.value<KVPropertyListUid>();
}
