#pragma once

#include <QByteArray>
#include <QVariant>

// Reads an XML property list (as the tools print them) into QVariant values:
// dict -> QVariantMap, array -> QVariantList, integer -> qint64, true/false ->
// bool, string -> QString. An invalid QVariant when the text is not a plist.
class KVPropertyListReader
{
public:
    static QVariant read(const QByteArray &xml);
};
