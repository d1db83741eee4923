#include "KVInfoCommand.h"

#include "KVSystemEntities.h"

#include "tools/KVPropertyList.h"

#include <QVariantMap>

namespace kvlinux {

int KVInfoCommand::run(const KVHdiutilArguments &arguments)
{
    QList<KVAttachedImages::Entry> entries;
    if (registry())
        entries = attachedImages().current();

    if (!arguments.has(QStringLiteral("-plist"))) {
        printText(entries);
        return 0;
    }
    QVariantMap info{
        {QStringLiteral("framework"), version},
        {QStringLiteral("revision"), version},
        {QStringLiteral("vendor"), QStringLiteral("Korvelle")},
    };
    // Like recent macOS, no "images" key at all when nothing is attached.
    if (!entries.isEmpty()) {
        QVariantList images;
        for (const auto &entry : entries)
            images.append(imageDictionary(entry));
        info.insert(QStringLiteral("images"), images);
    }
    m_out.data(KVPropertyList::encodeXml(info));
    return 0;
}

QVariantMap KVInfoCommand::imageDictionary(const KVAttachedImages::Entry &entry) const
{
    const KVAttachment &r = entry.record;
    return {
        {QStringLiteral("autodiskmount"), true},
        {QStringLiteral("blockcount"), r.payloadSize / 512},
        {QStringLiteral("blocksize"), 512},
        {QStringLiteral("hdid-pid"), qint64(r.daemon.pid())},
        {QStringLiteral("image-encrypted"), true},
        {QStringLiteral("image-path"), r.imagePath},
        {QStringLiteral("image-type"), QStringLiteral("sparse disk image")},
        {QStringLiteral("owner-uid"), qint64(geteuid())},
        {QStringLiteral("removable"), true},
        {QStringLiteral("system-entities"),
         KVSystemEntities::toPropertyList(KVSystemEntities::of(r, entry.mounted))},
        {QStringLiteral("writeable"), !r.readOnly},
    };
}

void KVInfoCommand::printText(const QList<KVAttachedImages::Entry> &entries) const
{
    m_out.line(QStringLiteral("framework       : ") + version);
    m_out.line(QStringLiteral("driver          : ") + version);
    m_out.line(QStringLiteral("images          : %1").arg(entries.size()));
    for (const auto &entry : entries) {
        const KVAttachment &r = entry.record;
        m_out.line(QStringLiteral("================================================"));
        m_out.line(QStringLiteral("image-path      : ") + r.imagePath);
        m_out.line(QStringLiteral("image-type      : sparse disk image"));
        m_out.line(QStringLiteral("blockcount      : %1").arg(r.payloadSize / 512));
        m_out.line(QStringLiteral("blocksize       : 512"));
        m_out.line(QStringLiteral("writeable       : ") + (r.readOnly ? QStringLiteral("false") : QStringLiteral("TRUE")));
        m_out.line(QStringLiteral("image-encrypted : TRUE"));
        m_out.line(QStringLiteral("process ID      : %1").arg(r.daemon.pid()));
        for (const KVSystemEntity &entity : KVSystemEntities::of(r, entry.mounted))
            m_out.line(entity.devEntry + QLatin1Char('\t') + entity.contentHint + QLatin1Char('\t')
                       + entity.mountPoint);
    }
}

} // namespace kvlinux
