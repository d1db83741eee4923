#pragma once

#include "KVAttachedImages.h"
#include "KVAttachmentRegistry.h"
#include "KVDataPath.h"
#include "KVHdiutilArguments.h"
#include "KVImageError.h"
#include "KVKeyDerivation.h"
#include "KVToolOutput.h"

#include <memory>
#include <optional>
#include <unistd.h>

namespace kvlinux {

class KVLuksImage;
class KVSecureBytes;

// What the tools need from the place they run in.
struct KVToolEnvironment
{
    KVKeyDerivation derivation = KVKeyDerivation::libraryDefault();
    QString imagefs;               // the daemon program
    int passwordFd = STDIN_FILENO; // -stdinpass reads from here to its end
};

// One hdiutil verb. Subclasses answer a command line in hdiutil's dialect.
class KVHdiutilCommand
{
public:
    KVHdiutilCommand(const KVToolEnvironment &environment, KVToolOutput &out);
    virtual ~KVHdiutilCommand();

    // Returns the exit status.
    virtual int run(const KVHdiutilArguments &arguments) = 0;

protected:
    // The password on standard input, read to its end, without terminator.
    std::optional<KVSecureBytes> readPassword() const;

    // The runtime directory's records; nothing when there is no usable one.
    const KVAttachmentRegistry *registry();
    KVDataPath &dataPath();
    // Needs the registry: check registry() first.
    KVAttachedImages attachedImages();

    // Attached by us, or served by any imagefs (which locks the image file).
    bool isInUse(const QString &imagePath);

    // Unlocks a loaded header with the password from standard input.
    KVImageResult unlock(const KVLuksImage &image, KVSecureBytes &volumeKey) const;

    const KVToolEnvironment &m_environment;
    KVToolOutput &m_out;

private:
    std::optional<KVAttachmentRegistry> m_registry;
    std::unique_ptr<KVDataPath> m_dataPath;
};

} // namespace kvlinux
