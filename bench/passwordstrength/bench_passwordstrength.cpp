// Measures what scoring a password costs while it is typed:
//   1. the synchronous score of a 64- and a 4,096-character password (random
//      characters, and one character repeated, which is zxcvbn's slowest
//      kind of input), against zxcvbn on the whole 4,096 characters;
//   2. typing the last characters of a 4,096-character password: the time the
//      GUI thread spends per keystroke, and the time until the score arrives.
// A keystroke should cost less than one frame (16 ms) in every case.
#include "wizards/KVPasswordStrengthEstimator.h"

#include "../common/KVBenchTiming.h"

#include <zxcvbn.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {



QString randomPassword(qsizetype length)
{
    static const QString alphabet =
        QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789!@#$%^&*()-_=+");
    QRandomGenerator generator(42);
    QString password;
    for (qsizetype i = 0; i < length; ++i)
        password += alphabet.at(generator.bounded(int(alphabet.size())));
    return password;
}

void report(const char *what, KVTiming timing)
{
    std::printf("%-58s median %7.3f ms   worst %7.3f ms\n", what, timing.medianMs, timing.worstMs);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    constexpr int repetitions = 50;
    const QString short64 = randomPassword(64);
    const QString long4096 = randomPassword(4096);
    const QString repeated4096(4096, QLatin1Char('a'));

    KVPasswordStrengthEstimator::scoreForPassword(short64); // warm up
    report("score, 64 random characters",
           kvTime(repetitions, [&] { KVPasswordStrengthEstimator::scoreForPassword(short64); }));
    report("score, 4,096 random characters",
           kvTime(repetitions, [&] { KVPasswordStrengthEstimator::scoreForPassword(long4096); }));
    report("score, 4,096 times the same character",
           kvTime(repetitions, [&] { KVPasswordStrengthEstimator::scoreForPassword(repeated4096); }));
    const QByteArray wholeUtf8 = long4096.toUtf8();
    report("zxcvbn alone on all 4,096 random characters",
           kvTime(repetitions, [&] { ZxcvbnMatch(wholeUtf8.constData(), nullptr, nullptr); }));
    const QByteArray repeatedUtf8 = repeated4096.toUtf8();
    report("zxcvbn alone on all 4,096 repeated characters",
           kvTime(repetitions, [&] { ZxcvbnMatch(repeatedUtf8.constData(), nullptr, nullptr); }));

    // Typing the last characters of the long password, one estimate each.
    KVPasswordStrengthEstimator estimator;
    QEventLoop loop;
    QObject::connect(&estimator, &KVPasswordStrengthEstimator::scoreEstimated, &loop, &QEventLoop::quit);
    std::vector<double> guiThread;
    std::vector<double> untilScored;
    for (qsizetype typed = long4096.size() - repetitions; typed <= long4096.size(); ++typed) {
        const QString text = long4096.first(typed);
        QElapsedTimer clock;
        clock.start();
        estimator.estimate(text);
        guiThread.push_back(double(clock.nsecsElapsed()) / 1e6);
        loop.exec();
        untilScored.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    auto summary = [](std::vector<double> times) {
        std::sort(times.begin(), times.end());
        return KVTiming{times[times.size() / 2], times.back()};
    };
    report("typing 4,096 characters: GUI thread per keystroke", summary(guiThread));
    report("typing 4,096 characters: keystroke until score", summary(untilScored));
    return 0;
}
