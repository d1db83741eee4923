#include "KVAttachment.h"

namespace kvlinux {

namespace {

const QString attachingStage = QStringLiteral("attaching");
const QString attachedStage = QStringLiteral("attached");

} // namespace

QString KVAttachment::payloadPath() const
{
    return payloadDirectory + QStringLiteral("/payload");
}

QJsonObject KVAttachment::toJson() const
{
    return {
        {QStringLiteral("number"), number},
        {QStringLiteral("stage"), stage == Stage::Attached ? attachedStage : attachingStage},
        {QStringLiteral("bootId"), bootId},
        {QStringLiteral("tool"), tool.toJson()},
        {QStringLiteral("imagePath"), imagePath},
        {QStringLiteral("imageDevice"), QString::number(imageDevice)},
        {QStringLiteral("imageInode"), QString::number(imageInode)},
        {QStringLiteral("readOnly"), readOnly},
        {QStringLiteral("volumeName"), volumeName},
        {QStringLiteral("volumeUuid"), volumeUuid},
        {QStringLiteral("payloadSize"), payloadSize},
        {QStringLiteral("dataPath"), dataPath},
        {QStringLiteral("daemon"), daemon.toJson()},
        {QStringLiteral("payloadDirectory"), payloadDirectory},
        {QStringLiteral("loopDevice"), loopDevice},
        {QStringLiteral("fuse2fs"), fuse2fs.toJson()},
        {QStringLiteral("mountPoint"), mountPoint},
        {QStringLiteral("createdMountPoint"), createdMountPoint},
    };
}

KVAttachment KVAttachment::fromJson(const QJsonObject &json)
{
    KVAttachment a;
    a.number = json.value(QStringLiteral("number")).toInt();
    a.stage = json.value(QStringLiteral("stage")).toString() == attachedStage ? Stage::Attached
                                                                              : Stage::Attaching;
    a.bootId = json.value(QStringLiteral("bootId")).toString();
    a.tool = KVProcessIdentity::fromJson(json.value(QStringLiteral("tool")).toObject());
    a.imagePath = json.value(QStringLiteral("imagePath")).toString();
    a.imageDevice = json.value(QStringLiteral("imageDevice")).toString().toULongLong();
    a.imageInode = json.value(QStringLiteral("imageInode")).toString().toULongLong();
    a.readOnly = json.value(QStringLiteral("readOnly")).toBool();
    a.volumeName = json.value(QStringLiteral("volumeName")).toString();
    a.volumeUuid = json.value(QStringLiteral("volumeUuid")).toString();
    a.payloadSize = json.value(QStringLiteral("payloadSize")).toInteger();
    a.dataPath = json.value(QStringLiteral("dataPath")).toString();
    a.daemon = KVProcessIdentity::fromJson(json.value(QStringLiteral("daemon")).toObject());
    a.payloadDirectory = json.value(QStringLiteral("payloadDirectory")).toString();
    a.loopDevice = json.value(QStringLiteral("loopDevice")).toString();
    a.fuse2fs = KVProcessIdentity::fromJson(json.value(QStringLiteral("fuse2fs")).toObject());
    a.mountPoint = json.value(QStringLiteral("mountPoint")).toString();
    a.createdMountPoint = json.value(QStringLiteral("createdMountPoint")).toBool();
    return a;
}

} // namespace kvlinux
