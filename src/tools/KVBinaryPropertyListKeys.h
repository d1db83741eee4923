#pragma once

#include <QByteArrayView>

// A look at the dictionary keys of a binary property list ("bplist00")
// before libplist reads it. libplist gives keys out as C strings and aborts
// the process on a key that holds a NUL; such a key means nothing in any
// property list a tool or the settings hold, so the whole list is refused.
//
// Only the object table is walked: every offset and count is checked against
// the data's size, and each key is looked at once however many dictionaries
// share it, so the look is linear in the size of the data.
class KVBinaryPropertyListKeys
{
public:
    static bool anyKeyHoldsNul(QByteArrayView data);
};
