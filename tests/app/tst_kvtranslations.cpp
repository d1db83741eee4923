#include "app/KVMainWindow.h"
#include "app/KVTranslations.h"
#include "model/KVLocalization.h"

#include <QAbstractItemModel>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTreeView>
#include <QXmlStreamReader>

namespace {

struct CatalogueEntry
{
    QString context;
    QString source;
    QStringList translations; // one, or one per plural form
    QString state;            // "unfinished", "vanished", … or empty when done
};

QList<CatalogueEntry> readCatalogue(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<CatalogueEntry> entries;
    QString context;
    bool plural = false;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"name") {
            context = xml.readElementText();
        } else if (xml.name() == u"message") {
            plural = xml.attributes().value(QLatin1String("numerus")) == u"yes";
            entries.append({context, {}, {}, {}});
        } else if (xml.name() == u"source") {
            entries.last().source = xml.readElementText();
        } else if (xml.name() == u"translation") {
            entries.last().state = xml.attributes().value(QLatin1String("type")).toString();
            if (!plural)
                entries.last().translations.append(xml.readElementText());
        } else if (xml.name() == u"numerusform") {
            entries.last().translations.append(xml.readElementText());
        }
    }
    return entries;
}

// %1…%99 and %n, in order of appearance sorted, so that reordering in a
// translation is allowed but losing or adding one is not.
QStringList placeholders(const QString &text)
{
    static const QRegularExpression placeholder(QStringLiteral("%(\\d{1,2}|n)"));
    QStringList found;
    for (const QRegularExpressionMatch &match : placeholder.globalMatch(text))
        found.append(match.captured());
    found.sort();
    return found;
}

QStringList markup(const QString &text)
{
    static const QRegularExpression tag(QStringLiteral("<[^>]+>"));
    QStringList found;
    for (const QRegularExpressionMatch &match : tag.globalMatch(text))
        found.append(match.captured());
    return found;
}

bool hasMnemonic(const QString &text)
{
    return QString(text).remove(QStringLiteral("&&")).contains(u'&');
}

QStringList menuTitles(const KVMainWindow &window)
{
    QStringList titles;
    for (const QAction *action : window.menuBar()->actions())
        titles.append(action->text());
    return titles;
}

} // namespace

Q_DECLARE_METATYPE(CatalogueEntry)

class TestKVTranslations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void catalogueSitsBesideTheProgram()
    {
        QCOMPARE(QDir::cleanPath(KVTranslations::defaultDirectory()), QDir::cleanPath(QStringLiteral(KV_TRANSLATIONS_DIR)));
    }

    void germanTranslatesMenusSidebarAndEngineTexts()
    {
        const KVTranslations translations(QLocale(QLocale::German, QLocale::Germany));
        QVERIFY(translations.isInstalled());

        KVMainWindow window;
        QCOMPARE(menuTitles(window), (QStringList{QStringLiteral("&Datei"), QStringLiteral("&Volume"),
                                                   QStringLiteral("&Hilfe")}));
        const QAbstractItemModel *sidebar = window.sidebar()->model();
        QCOMPARE(sidebar->index(0, 0).data().toString(), QStringLiteral("Favoriten"));
        QCOMPARE(sidebar->index(1, 0).data().toString(), QStringLiteral("Eingehängt"));
        QCOMPARE(KVLocalization::tr("Wrong Password"), QStringLiteral("Falsches Passwort"));
        // A tool's line that no catalogue knows shows as it stands.
        QCOMPARE(kvLocalized(QStringLiteral("hdiutil: attach failed - no such thing")),
                 QStringLiteral("hdiutil: attach failed - no such thing"));
    }

    void qtsOwnButtonsFollowTheLanguage()
    {
        if (!QFile::exists(QLibraryInfo::path(QLibraryInfo::TranslationsPath) + QStringLiteral("/qtbase_de.qm")))
            QSKIP("Qt's own German catalogue is not installed");
        const KVTranslations translations(QLocale(QLocale::German));
        const QDialogButtonBox buttons(QDialogButtonBox::Cancel);
        QCOMPARE(buttons.button(QDialogButtonBox::Cancel)->text().remove(u'&'), QStringLiteral("Abbrechen"));
    }

    void otherLanguagesStayEnglish_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("directory");
        QTest::newRow("English") << QLocale(QLocale::English, QLocale::UnitedStates) << QString();
        QTest::newRow("C") << QLocale::c() << QString();
        QTest::newRow("no catalogue for Japanese") << QLocale(QLocale::Japanese) << QString();
        QTest::newRow("German, catalogues missing") << QLocale(QLocale::German) << QStringLiteral("/nonexistent");
    }

    void otherLanguagesStayEnglish()
    {
        QFETCH(QLocale, locale);
        QFETCH(QString, directory);
        const KVTranslations translations(locale, directory.isEmpty() ? KVTranslations::defaultDirectory() : directory);
        QVERIFY(!translations.isInstalled());

        KVMainWindow window;
        QCOMPARE(menuTitles(window), (QStringList{QStringLiteral("&File"), QStringLiteral("&Volume"),
                                                   QStringLiteral("&Help")}));
        QCOMPARE(window.sidebar()->model()->index(1, 0).data().toString(), QStringLiteral("Mounted"));
        QCOMPARE(KVLocalization::tr("Wrong Password"), QStringLiteral("Wrong Password"));
    }

    void everyTextIsTranslatedWhole_data()
    {
        QTest::addColumn<CatalogueEntry>("entry");
        const QDir catalogues(QStringLiteral(KV_TS_DIR));
        const QStringList files = catalogues.entryList({QStringLiteral("korvelle_*.ts")}, QDir::Files);
        QVERIFY(files.contains(QStringLiteral("korvelle_de.ts")));
        for (const QString &file : files) {
            const QList<CatalogueEntry> entries = readCatalogue(catalogues.filePath(file));
            QVERIFY2(entries.size() > 250, qPrintable(file));
            for (const CatalogueEntry &entry : entries) {
                if (entry.state == u"vanished" || entry.state == u"obsolete")
                    continue;
                QTest::addRow("%s %s: %s", qPrintable(file), qPrintable(entry.context), qPrintable(entry.source))
                    << entry;
            }
        }
    }

    // Finished, not empty, and keeping the placeholders, the markup and the
    // keyboard mnemonic of the English text.
    void everyTextIsTranslatedWhole()
    {
        QFETCH(CatalogueEntry, entry);
        QCOMPARE(entry.state, QString());
        QVERIFY(!entry.translations.isEmpty());
        for (const QString &translation : entry.translations) {
            QVERIFY(!translation.trimmed().isEmpty());
            QCOMPARE(placeholders(translation), placeholders(entry.source));
            QCOMPARE(markup(translation), markup(entry.source));
            QCOMPARE(hasMnemonic(translation), hasMnemonic(entry.source));
        }
    }
};

QTEST_MAIN(TestKVTranslations)
#include "tst_kvtranslations.moc"
