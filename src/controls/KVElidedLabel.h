#pragma once

#include <QLabel>

// A one-line label for a path or a name that may be longer than the room it
// has: once laid out it shows the text cut in the middle to its width, so both
// the start and the end stay readable, and it never widens its window.
// text() is what is shown; fullText() what it was given.
class KVElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit KVElidedLabel(QWidget *parent = nullptr);

    void setFullText(const QString &text);
    const QString &fullText() const { return m_fullText; }

    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void elide();

    QString m_fullText;
};
