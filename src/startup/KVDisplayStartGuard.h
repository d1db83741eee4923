#pragma once

#include <QString>
#include <QtGlobal>

// Qt ends a program that finds no display with an abort and a paragraph about
// platform plugins. While it lives, this guard holds back Qt's messages about
// the windowing system; when Qt gives up because no display answered, it
// prints one sentence that says so instead and ends the process with status 1.
// Destroyed after a successful start, it hands the held messages on unchanged.
class KVDisplayStartGuard
{
public:
    KVDisplayStartGuard();
    ~KVDisplayStartGuard();
    KVDisplayStartGuard(const KVDisplayStartGuard &) = delete;
    KVDisplayStartGuard &operator=(const KVDisplayStartGuard &) = delete;

    static QString noDisplaySentence();

    // Whether the messages Qt printed before giving up mean "no display",
    // rather than, say, a missing plugin.
    static bool meansNoDisplay(const QStringList &heldMessages, bool displayNamed);

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);
};
