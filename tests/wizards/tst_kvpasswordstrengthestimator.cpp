#include "wizards/KVPasswordStrengthEstimator.h"

#include <zxcvbn.h>

#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <limits>

namespace {

double libraryEntropy(const QString &password)
{
    return ZxcvbnMatch(password.toUtf8().constData(), nullptr, nullptr);
}

const QString kStrongPassword = QStringLiteral("x7$Lq!9vR@2mZ#p4Wk&e");

} // namespace

class TestKVPasswordStrengthEstimator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void crackTimeBoundsFallIntoTheHigherScore_data()
    {
        QTest::addColumn<float>("seconds");
        QTest::addColumn<int>("score");
        QTest::newRow("instant") << 0.0f << 0;
        QTest::newRow("just under 100 s") << std::nextafter(100.0f, 0.0f) << 0;
        QTest::newRow("100 s") << 100.0f << 1;
        QTest::newRow("10^4 s") << 1e4f << 2;
        QTest::newRow("just under 10^6 s") << std::nextafter(1e6f, 0.0f) << 2;
        QTest::newRow("10^6 s") << 1e6f << 3;
        QTest::newRow("just under 10^8 s") << std::nextafter(1e8f, 0.0f) << 3;
        QTest::newRow("10^8 s") << 1e8f << 4;
        QTest::newRow("infinite") << std::numeric_limits<float>::infinity() << 4;
        QTest::newRow("NaN") << std::numeric_limits<float>::quiet_NaN() << 0;
        QTest::newRow("negative") << -5.0f << 0;
    }

    void crackTimeBoundsFallIntoTheHigherScore()
    {
        QFETCH(float, seconds);
        QFETCH(int, score);
        QCOMPARE(KVPasswordStrengthEstimator::scoreForCrackTime(seconds), score);
    }

    void crackTimeIsHalfTheSpaceAtTenThousandGuessesASecond()
    {
        // 2^21 guesses: half of them at 10^4 a second take 104.8576 s.
        QCOMPARE(KVPasswordStrengthEstimator::crackTimeForEntropy(21), 104.8576f);
        // Entropies whose crack time lands on a bound within double rounding
        // score as the bound itself once kept in single precision.
        QCOMPARE(KVPasswordStrengthEstimator::scoreForCrackTime(
                     KVPasswordStrengthEstimator::crackTimeForEntropy(std::log2(2e6))), 1);
        QCOMPARE(KVPasswordStrengthEstimator::scoreForCrackTime(
                     KVPasswordStrengthEstimator::crackTimeForEntropy(std::log2(2e12))), 4);
        QVERIFY(std::isinf(KVPasswordStrengthEstimator::crackTimeForEntropy(400)));
    }

    void scoresPasswords_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("score");
        QTest::newRow("empty") << QString() << 0;
        QTest::newRow("dictionary word") << QStringLiteral("password") << 0;
        QTest::newRow("keyboard row") << QStringLiteral("qwerty") << 0;
        QTest::newRow("random") << kStrongPassword << 4;
    }

    void scoresPasswords()
    {
        QFETCH(QString, password);
        QFETCH(int, score);
        QCOMPARE(KVPasswordStrengthEstimator::scoreForPassword(password), score);
    }

    void handsAnyUnicodeToZxcvbnAsUtf8_data()
    {
        QTest::addColumn<QString>("password");
        QTest::newRow("accents") << QStringLiteral("\u00e9t\u00e9 \u00e0 Z\u00fcrich");
        QTest::newRow("combining marks") << QStringLiteral("e\u0301e\u0301a\u0308o\u0303\u0323");
        QTest::newRow("outside the BMP") << QStringLiteral("\U0001F511\U0001F600\U00010348\U0001D11E");
        QTest::newRow("CJK") << QStringLiteral("\u5bc6\u7801\u5b89\u5168");
        QTest::newRow("right to left") << QStringLiteral("\u05e1\u05d9\u05e1\u05de\u05d4");
    }

    void handsAnyUnicodeToZxcvbnAsUtf8()
    {
        QFETCH(QString, password);
        QCOMPARE(KVPasswordStrengthEstimator::entropyForPassword(password), libraryEntropy(password));
        const int score = KVPasswordStrengthEstimator::scoreForPassword(password);
        QVERIFY(score >= 0 && score <= 4);
    }

    void malformedTextScoresWithoutCrashing()
    {
        const QString loneSurrogates = QString(QChar(0xd800)) + QStringLiteral("abc") + QChar(0xdc00);
        const QString embeddedNul = QStringLiteral("abc") + QChar(0) + QStringLiteral("def");
        for (const QString &password : {loneSurrogates, embeddedNul}) {
            const int score = KVPasswordStrengthEstimator::scoreForPassword(password);
            QVERIFY(score >= 0 && score <= 4);
        }
    }

    void longPasswordsAreScoredByTheirPrefix()
    {
        constexpr qsizetype prefix = KVPasswordStrengthEstimator::kEstimatedPrefixLength;
        const QString repeated(16 * prefix, QLatin1Char('a'));
        QCOMPARE(KVPasswordStrengthEstimator::entropyForPassword(repeated),
                 libraryEntropy(repeated.first(prefix)) + 4.0);

        // Exactly at the limit nothing is extrapolated.
        const QString atLimit(prefix, QLatin1Char('b'));
        QCOMPARE(KVPasswordStrengthEstimator::entropyForPassword(atLimit), libraryEntropy(atLimit));

        // A pair of surrogates across the limit is not cut in two.
        const QString straddling = QString(prefix - 1, QLatin1Char('c')) + QStringLiteral("\U0001F511") +
                                   QString(prefix, QLatin1Char('c'));
        QCOMPARE(KVPasswordStrengthEstimator::entropyForPassword(straddling),
                 libraryEntropy(straddling.first(prefix - 1)) + std::log2(double(straddling.size()) / (prefix - 1)));

        QString longStrong;
        while (longStrong.size() < 4096)
            longStrong += kStrongPassword;
        QCOMPARE(KVPasswordStrengthEstimator::scoreForPassword(longStrong), 4);
    }

    void estimatesOffTheCallersThreadAndReportsOnlyTheNewestText()
    {
        KVPasswordStrengthEstimator estimator;
        QSignalSpy scored(&estimator, &KVPasswordStrengthEstimator::scoreEstimated);
        // Typed faster than estimated: none of these can finish before the
        // event loop runs, so only the last one is reported.
        estimator.estimate(QStringLiteral("p"));
        estimator.estimate(QStringLiteral("pa"));
        estimator.estimate(kStrongPassword);
        QVERIFY(scored.wait(10000));
        QCOMPARE(scored.size(), 1);
        QCOMPARE(scored.at(0).at(0).toInt(), 4);

        estimator.estimate(kStrongPassword);
        estimator.cancel();
        estimator.estimate(QString());
        QTRY_COMPARE_WITH_TIMEOUT(scored.size(), 2, 10000);
        QCOMPARE(scored.at(1).at(0).toInt(), 0);
    }

    void destroyingWhileEstimatingIsSafe()
    {
        auto estimator = std::make_unique<KVPasswordStrengthEstimator>();
        QSignalSpy scored(estimator.get(), &KVPasswordStrengthEstimator::scoreEstimated);
        estimator->estimate(QString(4096, QLatin1Char('z')));
        estimator.reset();
        QCoreApplication::processEvents();
        QCOMPARE(scored.size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestKVPasswordStrengthEstimator)
#include "tst_kvpasswordstrengthestimator.moc"
