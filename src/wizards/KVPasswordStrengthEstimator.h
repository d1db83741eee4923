#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <optional>

// Scores a password from 0 (guessed at once) to 4 (very hard to guess) with
// zxcvbn.
//
// zxcvbn gives the password's entropy in bits; the score follows from the
// time an attacker needs at 10,000 guesses a second to search half the space,
// with the bounds 10^2, 10^4, 10^6 and 10^8 seconds (a bound itself counts
// for the higher score).
//
// The static functions score synchronously. estimate() scores on a worker
// thread and reports through scoreEstimated() on the owner's thread, so that
// typing never waits for zxcvbn: while one estimate runs, later requests
// replace each other and only the newest text is scored next. A typical owner
// connects a password field's textDidChange() to estimate(field->text()) and
// scoreEstimated() to the meter's scorePassword().
class KVPasswordStrengthEstimator : public QObject
{
    Q_OBJECT

public:
    // Passwords longer than this (in UTF-16 units) are scored by their prefix
    // of this length; see entropyForPassword().
    static constexpr qsizetype kEstimatedPrefixLength = 256;

    explicit KVPasswordStrengthEstimator(QObject *parent = nullptr);
    ~KVPasswordStrengthEstimator() override;

    static double entropyForPassword(QStringView password);
    static float crackTimeForEntropy(double bits);
    static int scoreForCrackTime(float seconds);
    static int scoreForPassword(QStringView password);

    void estimate(const QString &password);
    // Forgets pending work: no scoreEstimated() follows for earlier requests
    // (call it when the field is reset).
    void cancel();

Q_SIGNALS:
    void scoreEstimated(int score);

private:
    void startPending();
    void finished(int score, quint64 request);

    QThreadPool m_worker;
    std::optional<QString> m_pending;
    bool m_running = false;
    quint64 m_latestRequest = 0;
};
