#pragma once

#include "KVConversionStatusParser.h"

// One look at the conversion state of every logical volume, through the text
// listing of `diskutil cs list`. A poll that fails is only logged: nobody is
// told, and whatever the output did show still counts.
struct KVConversionStatusPoll
{
    // Runs diskutil on the calling thread.
    static KVConversionStatusPoll run(const QString &diskutil);

    QList<KVConversionStatus> statuses;
    bool failed = false;
};
