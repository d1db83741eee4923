#include "KVUdevProperties.h"

#include <QFile>

#include <sys/sysmacros.h>

namespace kvlinux {

KVUdevProperties::KVUdevProperties(QString databaseDirectory)
    : m_directory(std::move(databaseDirectory))
{
}

QHash<QString, QString> KVUdevProperties::of(dev_t device) const
{
    QFile file(QStringLiteral("%1/b%2:%3").arg(m_directory).arg(major(device)).arg(minor(device)));
    QHash<QString, QString> properties;
    if (!file.open(QIODevice::ReadOnly))
        return properties;
    // A few dozen short lines; anything much longer is not udev's.
    const QByteArray content = file.read(64 * 1024);
    for (const QByteArray &line : content.split('\n')) {
        const qsizetype equals = line.indexOf('=');
        if (!line.startsWith("E:") || equals < 3)
            continue;
        properties.insert(QString::fromUtf8(line.mid(2, equals - 2)), QString::fromUtf8(line.mid(equals + 1)));
    }
    return properties;
}

QString KVUdevProperties::decodeEscapes(const QString &encoded)
{
    const QByteArray in = encoded.toUtf8();
    QByteArray out;
    for (qsizetype i = 0; i < in.size(); ++i) {
        bool ok = false;
        const int value = i + 3 < in.size() && in[i] == '\\' && in[i + 1] == 'x' ? in.mid(i + 2, 2).toInt(&ok, 16) : 0;
        if (ok) {
            out.append(char(value));
            i += 3;
        } else {
            out.append(in[i]);
        }
    }
    return QString::fromUtf8(out);
}

} // namespace kvlinux
