#pragma once

#include <QVariant>

// Reads property-list values the way Foundation does, which the tools' outputs
// rely on: system_profiler prints flags as "yes"/"no" strings, diskutil prints
// percentages as "91%", and an absent key reads as empty, zero or false.
namespace KVValue {

// A string is true when its first character after blanks, an optional sign and
// leading zeros is Y, y, T, t or a digit 1-9.
bool boolValue(const QVariant &value);
// A string gives its leading decimal digits (after blanks and a sign); a real is truncated.
qint64 integerValue(const QVariant &value);
// Strings as they are; numbers as their decimal text; anything else empty.
QString stringValue(const QVariant &value);
// A name shown to the user ends at its first NUL, as names do in the system's
// tools and file systems (and as the Linux tools write them).
QString nameValue(const QVariant &value);
// A path holding a NUL names no file: it reads as no path at all, never as
// the different path before the NUL.
QString pathValue(const QVariant &value);
QVariantMap dictionary(const QVariant &value);
QVariantList array(const QVariant &value);
// The dictionary that is the first element of an array; empty when there is none.
QVariantMap firstDictionary(const QVariant &array);

} // namespace KVValue
