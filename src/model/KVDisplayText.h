#pragma once

#include <QString>

// Turns a name or a path that came from outside (a volume name from an image's
// header, a path from the mount table, a favourite's name from the settings
// file) into text that is safe to show on one line. Only what is shown changes:
// the name itself, which the tools get back, stays as it was.
class KVDisplayText
{
public:
    // Names in menus, notifications and alerts are cut to this many characters.
    static constexpr qsizetype MaximumLength = 64;
    // Paths keep more: their start and their last folder both say where they are.
    static constexpr qsizetype MaximumPathLength = 120;

    // The text on one line: line breaks and tabs read as one space, other
    // control characters as U+FFFD (as Qt shows bytes that are not UTF-8), and
    // no directional formatting character is left to reorder what follows.
    static QString singleLine(const QString &text);

    // singleLine(), with the middle left out ("…") when it is longer than
    // `maximumLength` characters as the user counts them.
    static QString shortened(const QString &text, qsizetype maximumLength = MaximumLength);

    // shortened(), for a name placed inside a sentence: a name written right to
    // left is isolated, so that it cannot move the sentence's own punctuation.
    static QString inSentence(const QString &text, qsizetype maximumLength = MaximumLength);

    // inSentence(), as a menu item's title: an "&" stays an "&" and does not
    // become a keyboard shortcut.
    static QString inMenu(const QString &text);
};
