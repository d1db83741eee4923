#include "KVDisplayStartGuard.h"

#include <QStringList>

#include <utility>

#include <cstdio>
#include <unistd.h>

namespace {

struct HeldMessage
{
    QtMsgType type;
    QByteArray category;
    QString text;
};

// A message handler is a plain function, so its state is the process's.
QtMessageHandler previousHandler = nullptr;
QList<HeldMessage> heldMessages;

bool isWindowingMessage(const QMessageLogContext &context)
{
    return context.category && qstrncmp(context.category, "qt.qpa.", 7) == 0;
}

bool displayNamed()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
           || qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

void replay(const QList<HeldMessage> &messages)
{
    for (const HeldMessage &held : messages) {
        const QMessageLogContext context(nullptr, 0, nullptr, held.category.constData());
        previousHandler(held.type, context, held.text);
    }
}

} // namespace

KVDisplayStartGuard::KVDisplayStartGuard()
{
    previousHandler = qInstallMessageHandler(&KVDisplayStartGuard::handle);
}

KVDisplayStartGuard::~KVDisplayStartGuard()
{
    qInstallMessageHandler(previousHandler);
    replay(std::exchange(heldMessages, {}));
}

QString KVDisplayStartGuard::noDisplaySentence()
{
    return QStringLiteral("Korvelle needs a graphical display, and none is reachable: start it from a desktop "
                          "session (DISPLAY or WAYLAND_DISPLAY must name a running display).");
}

bool KVDisplayStartGuard::meansNoDisplay(const QStringList &messages, bool named)
{
    if (!named)
        return true;
    for (const QString &message : messages) {
        if (message.contains(QLatin1String("could not connect to display"), Qt::CaseInsensitive)
            || message.contains(QLatin1String("Failed to create wl_display"), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

void KVDisplayStartGuard::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtFatalMsg) {
        if (isWindowingMessage(context))
            heldMessages.append({type, QByteArray(context.category), message});
        else
            previousHandler(type, context, message);
        return;
    }
    QStringList texts;
    for (const HeldMessage &held : heldMessages)
        texts.append(held.text);
    if (!meansNoDisplay(texts, displayNamed())) {
        // Something else is wrong (a missing plugin, say): Qt's own words help more.
        replay(std::exchange(heldMessages, {}));
        previousHandler(type, context, message);
        return;
    }
    const QByteArray sentence = noDisplaySentence().toLocal8Bit() + '\n';
    std::fputs(sentence.constData(), stderr);
    std::fflush(stderr);
    _exit(1);
}
