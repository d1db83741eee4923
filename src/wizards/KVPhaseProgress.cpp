#include "KVPhaseProgress.h"

#include "controls/KVColors.h"
#include "controls/KVCustomProgressIndicatorView.h"

#include <QLabel>

namespace {

const QColor &pendingColour()
{
    static const QColor colour = KVColors::fromHsb(0.905f, 0.0f, 0.607f);
    return colour;
}

void colourLabel(QLabel *label, const QColor &colour)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    label->setPalette(palette);
}

} // namespace

KVPhaseProgress::KVPhaseProgress(KVCustomProgressIndicatorView *bar, const QVector<QLabel *> &phaseLabels,
                                 QObject *parent)
    : QObject(parent)
    , m_bar(bar)
{
    for (QLabel *label : phaseLabels)
        m_labels.append(label);
    m_bar->setOutlineColor(KVColors::fromHsb(0.906f, 0.0f, 0.723f));
    m_bar->setBackgroundColor(KVColors::fromHsb(0.905f, 0.0f, 0.83f));
    m_bar->setProgressBarColor(KVColors::fromHsb(0.589f, 0.319f, 0.897f));
    m_bar->setProgressBarOutlineColor(KVColors::fromHsb(0.611f, 0.781f, 0.862f));
    connect(this, &KVPhaseProgress::progressCounterChanged, this, &KVPhaseProgress::progressCounterDidChange);
}

void KVPhaseProgress::setProgressCounter(int counter)
{
    const int old = m_progressCounter;
    m_progressCounter = counter;
    // Observers hear every setting, an unchanged one included, as the bar's owner expects.
    Q_EMIT progressCounterChanged(counter, old);
}

void KVPhaseProgress::progressCounterDidChange(int newValue)
{
    if (m_bar)
        m_bar->setValue(double(newValue));
    if (newValue > 0 && newValue - 1 < m_labels.size() && m_labels[newValue - 1])
        colourLabel(m_labels[newValue - 1], Qt::black);
}

void KVPhaseProgress::reset()
{
    setProgressCounter(0);
    for (QLabel *label : std::as_const(m_labels)) {
        if (label)
            colourLabel(label, pendingColour());
    }
}

bool KVPhaseProgress::isReached(int index) const
{
    const QLabel *label = m_labels.value(index);
    return label && label->palette().color(QPalette::WindowText) == QColor(Qt::black);
}
