#include "wizards/KVPasswordStrengthEstimator.h"

#include <zxcvbn.h>

#include <QByteArray>

#include <cmath>
#include <string.h>

KVPasswordStrengthEstimator::KVPasswordStrengthEstimator(QObject *parent)
    : QObject(parent)
{
    m_worker.setMaxThreadCount(1);
}

KVPasswordStrengthEstimator::~KVPasswordStrengthEstimator()
{
    // The running estimate refers to this object; it is bounded to a few
    // milliseconds (see entropyForPassword()), so waiting for it is cheap.
    m_pending.reset();
    m_worker.waitForDone();
}

double KVPasswordStrengthEstimator::entropyForPassword(QStringView password)
{
    // zxcvbn matches every substring against its dictionaries, keyboard
    // patterns, dates and repeats, and its running time grows faster than the
    // length, without a bound in some versions of the library. Pasting a few
    // thousand characters into a field must not stall the typing, so, as
    // careful password managers do, only a prefix is analysed. The rest is
    // charged like repetitions of that prefix (log2 of the number of times it
    // fits), which is what zxcvbn charges for repeats. That never claims more
    // strength than the prefix shows, and a prefix of this length that is not
    // already at the highest score is in practice a repetition.
    qsizetype analysed = std::min(password.size(), kEstimatedPrefixLength);
    if (analysed < password.size() && password[analysed - 1].isHighSurrogate())
        --analysed; // never cut a character outside the Basic Multilingual Plane in two

    QByteArray utf8 = password.first(analysed).toUtf8();
    double bits = ZxcvbnMatch(utf8.constData(), nullptr, nullptr);
    explicit_bzero(utf8.data(), size_t(utf8.size()));

    if (analysed < password.size())
        bits += std::log2(double(password.size()) / double(analysed));
    return bits;
}

float KVPasswordStrengthEstimator::crackTimeForEntropy(double bits)
{
    // Half the search space, at 10,000 guesses a second; computed in double
    // and kept in single precision, which is the precision the bounds are
    // compared in.
    return float(std::exp2(bits) * 0.5 * 0.0001);
}

int KVPasswordStrengthEstimator::scoreForCrackTime(float seconds)
{
    constexpr float kBounds[] = {1e2f, 1e4f, 1e6f, 1e8f};
    int score = 0;
    for (const float bound : kBounds) {
        if (seconds >= bound)
            ++score;
    }
    return score;
}

int KVPasswordStrengthEstimator::scoreForPassword(QStringView password)
{
    return scoreForCrackTime(crackTimeForEntropy(entropyForPassword(password)));
}

void KVPasswordStrengthEstimator::estimate(const QString &password)
{
    ++m_latestRequest;
    m_pending = password;
    if (!m_running)
        startPending();
}

void KVPasswordStrengthEstimator::cancel()
{
    ++m_latestRequest;
    m_pending.reset();
}

void KVPasswordStrengthEstimator::startPending()
{
    m_running = true;
    const QString password = *std::exchange(m_pending, std::nullopt);
    const quint64 request = m_latestRequest;
    m_worker.start([this, password, request] {
        const int score = scoreForPassword(password);
        QMetaObject::invokeMethod(this, [this, score, request] { finished(score, request); },
                                  Qt::QueuedConnection);
    });
}

void KVPasswordStrengthEstimator::finished(int score, quint64 request)
{
    m_running = false;
    if (m_pending)
        startPending();
    else if (request == m_latestRequest)
        Q_EMIT scoreEstimated(score);
}
