#pragma once

#include <QString>

// Engine texts are looked up with their English text as the key, in one
// context. A line copied from a tool's output is looked up the same way, so an
// untranslated line shows as it stands.
QString kvLocalized(const char *englishText);
QString kvLocalized(const QString &key);
