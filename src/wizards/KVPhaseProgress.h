#pragma once

#include <QObject>
#include <QPointer>
#include <QVector>

class KVCustomProgressIndicatorView;
class QLabel;

// The progress step of the wizards that run a long tool: a bar that counts the
// tool's phase lines and one label per phase, grey until its phase is reached
// and black from then on.
//
// `progressCounter` is the number of phase lines seen since the last reset.
// Every change sets the bar to the new count and, when the count n is positive
// and label n - 1 exists, blackens that label; counts beyond the labels only
// move the bar. The bar's maximum is the interface file's.
class KVPhaseProgress : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int progressCounter READ progressCounter WRITE setProgressCounter NOTIFY progressCounterChanged)

public:
    KVPhaseProgress(KVCustomProgressIndicatorView *bar, const QVector<QLabel *> &phaseLabels, QObject *parent = nullptr);

    int progressCounter() const { return m_progressCounter; }
    void setProgressCounter(int counter);
    void increment() { setProgressCounter(m_progressCounter + 1); }

    // Counter at 0 and every label grey.
    void reset();

    // Whether the label of phase `index` (0-based) is shown as reached.
    bool isReached(int index) const;

Q_SIGNALS:
    void progressCounterChanged(int newValue, int oldValue);

private:
    void progressCounterDidChange(int newValue);

    QPointer<KVCustomProgressIndicatorView> m_bar;
    QVector<QPointer<QLabel>> m_labels;
    int m_progressCounter = 0;
};
