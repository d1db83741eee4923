#include "KVConversionRecord.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace kvlinux {

QString KVConversionRecord::path(const QString &directory, const QString &luksUuid)
{
    return directory + QStringLiteral("/conversion-") + luksUuid + QStringLiteral(".json");
}

bool KVConversionRecord::save(const QString &directory) const
{
    const QJsonObject json{
        {QStringLiteral("luksUuid"), luksUuid},
        {QStringLiteral("device"), device},
        {QStringLiteral("forward"), forward},
        {QStringLiteral("done"), QString::number(done)},
        {QStringLiteral("total"), QString::number(total)},
        {QStringLiteral("volumeName"), volumeName},
        {QStringLiteral("volumeUuid"), volumeUuid},
        {QStringLiteral("fileSystemSize"), QString::number(fileSystemSize)},
        {QStringLiteral("freeSpace"), QString::number(freeSpace)},
        {QStringLiteral("converter"), converter.toJson()},
    };
    QSaveFile file(path(directory, luksUuid));
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(json).toJson()) >= 0 && file.commit();
}

QString KVConversionRecord::logPath(const QString &directory, const QString &luksUuid)
{
    return directory + QStringLiteral("/conversion-") + luksUuid + QStringLiteral(".log");
}

void KVConversionRecord::remove(const QString &directory) const
{
    QFile::remove(path(directory, luksUuid));
    QFile::remove(logPath(directory, luksUuid));
}

std::optional<KVConversionRecord> KVConversionRecord::load(const QString &directory, const QString &luksUuid)
{
    QFile file(path(directory, luksUuid));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
    if (json.value(QStringLiteral("luksUuid")).toString() != luksUuid)
        return std::nullopt;
    KVConversionRecord r;
    r.luksUuid = luksUuid;
    r.device = json.value(QStringLiteral("device")).toString();
    r.forward = json.value(QStringLiteral("forward")).toBool(true);
    r.done = json.value(QStringLiteral("done")).toString().toULongLong();
    r.total = json.value(QStringLiteral("total")).toString().toULongLong();
    r.volumeName = json.value(QStringLiteral("volumeName")).toString();
    r.volumeUuid = json.value(QStringLiteral("volumeUuid")).toString();
    r.fileSystemSize = json.value(QStringLiteral("fileSystemSize")).toString().toULongLong();
    r.freeSpace = json.value(QStringLiteral("freeSpace")).toString().toULongLong();
    r.converter = KVProcessIdentity::fromJson(json.value(QStringLiteral("converter")).toObject());
    return r;
}

} // namespace kvlinux
