#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

// hdiutil info [-plist]: the images attached now.
class KVInfoCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;

    static inline const QString version = QStringLiteral("korvelle-1.0");

private:
    QVariantMap imageDictionary(const KVAttachedImages::Entry &entry) const;
    void printText(const QList<KVAttachedImages::Entry> &entries) const;
};

} // namespace kvlinux
