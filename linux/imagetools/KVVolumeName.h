#pragma once

#include <QString>

namespace kvlinux {

// Volume names come from outside: an image's header or ext4 label (which
// anybody can craft) and the command line. Every name the programs keep or
// print passes through here first, so that it is one line of text that a
// property list, a folder name and the application can all hold:
// - a name ends at its first NUL, as the header's label field and every C
//   string the system hands around do;
// - control characters (newlines, tabs, escapes) become blanks (other
//   blanks stay where they are: a name may begin with one);
// - bytes that are not UTF-8 and lone surrogates become U+FFFD;
// - bidirectional overrides, embeddings and isolates are dropped, so that a
//   name cannot reorder the text shown after it (the plain marks LRM, RLM
//   and ALM stay: right-to-left names need them);
// - at most 255 UTF-16 units are kept, as on macOS volumes, never cutting a
//   character in two.
class KVVolumeName
{
public:
    static constexpr qsizetype maxLength = 255;

    static QString sanitized(const QString &name);
    static QString fromUtf8(const QByteArray &bytes);
};

} // namespace kvlinux
