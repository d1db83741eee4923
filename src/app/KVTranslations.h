#pragma once

#include <QLocale>
#include <QString>
#include <QTranslator>

// The interface in the user's language: Korvelle's own catalogue and Qt's
// (standard buttons, file dialogs) for the first of the locale's languages
// that Korvelle has a catalogue for. Installed into the application while this
// object lives (a translator leaves the application when it is destroyed);
// without a catalogue the interface stays in English.
class KVTranslations
{
public:
    explicit KVTranslations(const QLocale &locale = QLocale::system(), const QString &directory = defaultDirectory());

    // Whether Korvelle's own catalogue was found and installed.
    bool isInstalled() const { return m_installed; }

    // share/korvelle/translations beside the program's bin folder: the same
    // place in the build tree and once installed.
    static QString defaultDirectory();

private:
    QTranslator m_korvelle;
    QTranslator m_qt;
    bool m_installed = false;
};
