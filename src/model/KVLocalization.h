#pragma once

#include <QCoreApplication>
#include <QString>

// Engine texts are looked up with their English text as the key, in the one
// context "Korvelle". A literal text is written KVLocalization::tr("...") so
// that lupdate files it under that context; a text kept for later is marked
// QT_TRANSLATE_NOOP("Korvelle", "...") where it is written. kvLocalized() looks
// such texts up, and the lines copied from a tool's output, which show as they
// stand when no translation has them.
class KVLocalization
{
    Q_DECLARE_TR_FUNCTIONS(Korvelle)

public:
    KVLocalization() = delete;
};

QString kvLocalized(const char *englishText);
QString kvLocalized(const QString &key);
