#pragma once

#include <QByteArray>
#include <QVariant>

// Writes a value tree as an XML property list in the layout macOS tools print
// (tabs, keys of a dictionary in sorted order). QVariantMap becomes <dict>,
// QVariantList <array>, bool <true/>/<false/>, integers <integer>, anything
// else <string>.
class KVPropertyList
{
public:
    static QByteArray toXml(const QVariant &root);
};
