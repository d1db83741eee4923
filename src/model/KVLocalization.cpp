#include "KVLocalization.h"

#include <QCoreApplication>

namespace {
constexpr char Context[] = "Korvelle";
}

QString kvLocalized(const char *englishText)
{
    return QCoreApplication::translate(Context, englishText);
}

QString kvLocalized(const QString &key)
{
    if (key.isEmpty())
        return key;
    return QCoreApplication::translate(Context, key.toUtf8().constData());
}
