#include "KVMountedCellView.h"

#include "KVSidebarStyle.h"
#include "controls/KVColors.h"
#include "controls/KVCustomProgressIndicatorView.h"
#include "model/KVDisplayText.h"
#include "model/KVVolumeItem.h"

#include <QFontMetrics>
#include <QLocale>
#include <QPainter>

namespace {

QString byteCount(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 2, QLocale::DataSizeSIFormat);
}

// "12.34 GB" becomes "12 GB"; "512 bytes", with no separator, stays.
QString wholeUnits(const QString &figure)
{
    const QString separator = QLocale().decimalPoint();
    const qsizetype cut = figure.indexOf(separator);
    if (figure.isEmpty() || cut < 0)
        return figure;
    return figure.left(cut) + u' ' + figure.right(2);
}

} // namespace

KVMountedCellView::KVMountedCellView(const KVVolumeItem &volume)
    : m_name(KVDisplayText::singleLine(volume.name()))
    , m_unmountButtonVisible(hasUnmountButton(volume))
{
    if (volume.type() == KVVolumeKind::DiskImage) {
        m_size = createSizeInfoFromVolumeItem(volume);
        m_image = QStringLiteral("DiskImageMountedIcon");
    } else if (volume.type() == KVVolumeKind::Disk) {
        m_image = QStringLiteral("DiskIcon");
        if (volume.converting())
            m_encryptionProgress = double(volume.conversionProgress());
        else
            m_size = createSizeInfoFromVolumeItem(volume);
    }
}

bool KVMountedCellView::hasUnmountButton(const KVVolumeItem &volume)
{
    return volume.type() == KVVolumeKind::DiskImage
           || (volume.type() == KVVolumeKind::Disk && !volume.isSystemPartition());
}

QString KVMountedCellView::createSizeInfoFromVolumeItem(const KVVolumeItem &volume)
{
    return tr("%1 of %2 used")
        .arg(wholeUnits(byteCount(volume.usedSpace())), wholeUnits(byteCount(volume.totalSize())));
}

KVMountedCellView::Layout KVMountedCellView::layout(const QRect &row)
{
    Layout parts;
    const int middle = row.top() + row.height() / 2;
    parts.image = QRect(row.left() + 14, middle - 14, 28, 28);
    parts.unmountButton = QRect(row.right() - 33, middle - 11, 22, 22);
    const int textLeft = parts.image.right() + 11;
    const int textWidth = parts.unmountButton.left() - 8 - textLeft;
    parts.name = QRect(textLeft, row.top() + 5, textWidth, 19);
    parts.size = QRect(textLeft, row.top() + 24, textWidth, 15);
    parts.encryptionProgress = QRect(textLeft, row.top() + 29, textWidth, ProgressBarHeight);
    return parts;
}

void KVMountedCellView::paint(QPainter *painter, const QRect &row, const QFont &font, State state,
                              KVCustomProgressIndicatorView &bar) const
{
    Layout parts = layout(row);
    if (!m_unmountButtonVisible) {
        // The text may use the button's place.
        for (QRect *text : {&parts.name, &parts.size, &parts.encryptionProgress})
            text->setRight(parts.unmountButton.right());
    }

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->fillRect(row, state.selected ? KVColors::kvSelectOutline() : KVColors::kvDarkGrey());
    if (state.selected)
        painter->fillRect(QRect(row.left(), row.top(), 3, row.height()), KVColors::kvLightGreyText());

    if (!m_image.isEmpty())
        KVSidebarStyle::paintArtwork(painter, m_image, parts.image);

    const QFont nameFont = KVSidebarStyle::font(font, 1.0, QFont::DemiBold);
    painter->setFont(nameFont);
    painter->setPen(state.selected ? QColor(Qt::white) : KVColors::kvWhiteText());
    painter->drawText(parts.name, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      QFontMetrics(nameFont).elidedText(m_name, Qt::ElideMiddle, parts.name.width()));

    if (m_size) {
        const QFont sizeFont = KVSidebarStyle::font(font, 0.85);
        painter->setFont(sizeFont);
        painter->setPen(state.selected ? KVColors::kvWhiteText() : KVColors::kvLightGreyText());
        painter->drawText(parts.size, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(sizeFont).elidedText(*m_size, Qt::ElideRight, parts.size.width()));
    }

    if (m_encryptionProgress && parts.encryptionProgress.width() > 0) {
        // The bar draws itself into a picture of its own: rendering a widget
        // straight into another one's paint event loses the painter's offset.
        bar.setValue(*m_encryptionProgress);
        bar.resize(parts.encryptionProgress.width(), ProgressBarHeight);
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        QPixmap picture(bar.size() * ratio);
        picture.setDevicePixelRatio(ratio);
        picture.fill(Qt::transparent);
        bar.render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
        painter->drawPixmap(parts.encryptionProgress.topLeft(), picture);
    }

    if (m_unmountButtonVisible) {
        if (state.unmountButtonHovered || state.unmountButtonPressed) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(QColor(255, 255, 255, state.unmountButtonPressed ? 46 : 24));
            painter->drawEllipse(parts.unmountButton);
        }
        const QRect icon(parts.unmountButton.center() - QPoint(6, 6), QSize(13, 13));
        KVSidebarStyle::paintArtwork(painter, QStringLiteral("UnmountIcon"), icon,
                                     state.unmountButtonHovered ? KVColors::kvWhiteText()
                                                                : KVColors::kvLightGreyText());
    }
    painter->restore();
}
