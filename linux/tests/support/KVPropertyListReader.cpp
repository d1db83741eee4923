#include "KVPropertyListReader.h"

#include <QXmlStreamReader>

namespace {

QVariant readValue(QXmlStreamReader &xml);

QVariant readDict(QXmlStreamReader &xml)
{
    QVariantMap map;
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("key"))
            return {};
        const QString key = xml.readElementText();
        if (!xml.readNextStartElement())
            return {};
        map.insert(key, readValue(xml));
    }
    return map;
}

QVariant readValue(QXmlStreamReader &xml)
{
    const auto name = xml.name();
    if (name == QLatin1String("dict"))
        return readDict(xml);
    if (name == QLatin1String("array")) {
        QVariantList list;
        while (xml.readNextStartElement())
            list.append(readValue(xml));
        return list;
    }
    if (name == QLatin1String("true") || name == QLatin1String("false")) {
        const bool value = name == QLatin1String("true");
        xml.skipCurrentElement();
        return value;
    }
    if (name == QLatin1String("integer"))
        return xml.readElementText().toLongLong();
    return xml.readElementText();
}

} // namespace

QVariant KVPropertyListReader::read(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("plist")
        || !reader.readNextStartElement())
        return {};
    const QVariant value = readValue(reader);
    return reader.hasError() ? QVariant() : value;
}
