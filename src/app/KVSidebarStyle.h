#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class QPainter;
class QRect;

// How the dark sidebar and its drop area draw: the application's SVG artwork
// and the sizes of their type.
namespace KVSidebarStyle {

// Draws ":/icons/<name>.svg" into `rect`, recoloured when a tint is given, so
// that one monochrome drawing serves the resting, hovered and selected
// states. Rendered pixmaps are kept in QPixmapCache.
void paintArtwork(QPainter *painter, const QString &name, const QRect &rect, const QColor &tint = QColor());

// `base` scaled by `factor`, in the given weight.
QFont font(QFont base, qreal factor, QFont::Weight weight = QFont::Normal);

} // namespace KVSidebarStyle
