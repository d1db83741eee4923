#pragma once

#include <QHeaderView>

// The column titles of the disk tables: 26 points high, in the bold system
// font of size 11, dark grey on the wizard's light background, with a hairline
// beneath.
class KVDiskTableHeaderCell : public QHeaderView
{
    Q_OBJECT

public:
    static constexpr int HeaderHeight = 26;
    static constexpr qreal TitlePointSize = 11.0;

    explicit KVDiskTableHeaderCell(QWidget *parent = nullptr);

    static QColor titleColour();
    QFont titleFont() const;

protected:
    void paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const override;
    QSize sizeHint() const override;
};
