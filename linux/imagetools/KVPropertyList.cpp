#include "KVPropertyList.h"

namespace {

QByteArray escaped(const QString &text)
{
    return text.toHtmlEscaped().toUtf8();
}

// Apple's layout: the root dictionary sits at the margin under <plist>, and
// every level below it is indented by one more tab.
void writeValue(QByteArray &out, const QVariant &value, int depth)
{
    const QByteArray indent(depth, '\t');
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        out += indent + "<dict>\n";
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            out += indent + "\t<key>" + escaped(it.key()) + "</key>\n";
            writeValue(out, it.value(), depth + 1);
        }
        out += indent + "</dict>\n";
        break;
    }
    case QMetaType::QVariantList:
        out += indent + "<array>\n";
        for (const QVariant &item : value.toList())
            writeValue(out, item, depth + 1);
        out += indent + "</array>\n";
        break;
    case QMetaType::Bool:
        out += indent + (value.toBool() ? "<true/>\n" : "<false/>\n");
        break;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        out += indent + "<integer>" + value.toString().toUtf8() + "</integer>\n";
        break;
    default:
        out += indent + "<string>" + escaped(value.toString()) + "</string>\n";
        break;
    }
}

} // namespace

QByteArray KVPropertyList::toXml(const QVariant &root)
{
    QByteArray out = QByteArrayLiteral(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n");
    writeValue(out, root, 0);
    out += "</plist>\n";
    return out;
}
