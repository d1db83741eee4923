#include "KVSidebarStyle.h"

#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace KVSidebarStyle {

void paintArtwork(QPainter *painter, const QString &name, const QRect &rect, const QColor &tint)
{
    if (rect.isEmpty())
        return;
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    const QSize pixels = (QSizeF(rect.size()) * ratio).toSize();
    const QString key = QStringLiteral("kvartwork:%1:%2x%3:%4")
                            .arg(name)
                            .arg(pixels.width())
                            .arg(pixels.height())
                            .arg(tint.isValid() ? tint.rgba() : 0u, 0, 16);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap(pixels);
        pixmap.fill(Qt::transparent);
        QPainter artwork(&pixmap);
        QSvgRenderer renderer(QStringLiteral(":/icons/%1.svg").arg(name));
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        renderer.render(&artwork);
        if (tint.isValid()) {
            artwork.setCompositionMode(QPainter::CompositionMode_SourceIn);
            artwork.fillRect(pixmap.rect(), tint);
        }
        artwork.end();
        pixmap.setDevicePixelRatio(ratio);
        QPixmapCache::insert(key, pixmap);
    }
    painter->drawPixmap(rect.topLeft(), pixmap);
}

QFont font(QFont base, qreal factor, QFont::Weight weight)
{
    if (base.pointSizeF() > 0)
        base.setPointSizeF(base.pointSizeF() * factor);
    else
        base.setPixelSize(qRound(base.pixelSize() * factor));
    base.setWeight(weight);
    return base;
}

} // namespace KVSidebarStyle
