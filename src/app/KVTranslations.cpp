#include "KVTranslations.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>

KVTranslations::KVTranslations(const QLocale &locale, const QString &directory)
{
    const QString separator = QStringLiteral("_");
    m_installed = m_korvelle.load(locale, QStringLiteral("korvelle"), separator, directory)
        && QCoreApplication::installTranslator(&m_korvelle);
    if (!m_installed)
        return;
    // Qt's catalogue in the language Korvelle speaks, so that its buttons do
    // not mix two languages; missing is fine, its buttons then stay English.
    const QLocale language(m_korvelle.language());
    if (m_qt.load(language, QStringLiteral("qtbase"), separator, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_qt);
}

QString KVTranslations::defaultDirectory()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath()
                           + QStringLiteral("/../share/korvelle/translations"));
}
