#include "app/KVApplication.h"
#include "platform/KVProcessHardening.h"
#include "startup/KVCommandLine.h"
#include "startup/KVDisplayStartGuard.h"

#include <cstdio>
#include <memory>

int main(int argc, char *argv[])
{
    // Before anything can hold a password.
    if (const KVOptionalError error = KVProcessHardening::apply())
        std::fprintf(stderr, "korvelle: %s: %s\n", qPrintable(error->localizedDescription()),
                     qPrintable(error->localizedFailureReason()));

    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (const std::optional<QString> answer = KVCommandLine(arguments).immediateAnswer()) {
        std::fputs(answer->toLocal8Bit().constData(), stdout);
        return 0;
    }

    auto displayGuard = std::make_unique<KVDisplayStartGuard>();
    KVApplication app(argc, argv);
    displayGuard.reset();
    return app.run();
}
