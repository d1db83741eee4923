#pragma once

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantMap>

#include <sys/types.h>

namespace kvlinux {

// Runs the test build of the tools (cheap key derivation) in a private work
// folder with a runtime directory of its own, so that tests running side by
// side never see each other's images, and clears away everything the tools
// made there even when a test fails half way: mounts, loop devices and
// daemons.
class KVImageToolHarness
{
public:
    struct Run
    {
        int exitCode = -1;
        QString output; // standard output and standard error, in order
        bool has(const QString &text) const { return output.contains(text); }
    };

    // With a user id, the tools run as that user (through setpriv).
    explicit KVImageToolHarness(uid_t user = 0, gid_t group = 0);
    ~KVImageToolHarness();

    bool isValid() const { return m_valid; }
    // Why the root data path (FUSE, loop device, kernel ext4) cannot be
    // tested here; empty when it can.
    static QString kernelPathUnavailable();
    QString path(const QString &name) const { return m_root + QLatin1Char('/') + name; }
    QString mountRoot() const { return path(QStringLiteral("volumes")); }
    QString runtimeDirectory() const { return path(QStringLiteral("runtime")); }

    Run hdiutil(const QStringList &arguments, const QByteArray &input = QByteArray()) const;
    Run diskutil(const QStringList &arguments) const;
    // /bin/sh -c script, as the harness's user, with the arguments as $1...
    Run shell(const QString &script, const QStringList &arguments = QStringList()) const;
    // Command lines that run a program as the harness's user, for tests that
    // start it themselves (to kill it half way, or keep it running).
    QStringList commandAsUser(const QString &program, const QStringList &arguments) const;
    QStringList hdiutilCommand(const QStringList &arguments) const;
    QStringList environment() const;

    // The application's command lines.
    Run create(const QString &name, const QByteArray &password, const QString &volumeName,
               const QString &encryption = QStringLiteral("AES-256"),
               const QString &size = QStringLiteral("64m")) const;
    Run attach(const QString &image, const QByteArray &password,
               const QStringList &options = QStringList()) const;
    Run detach(const QString &device, bool force = false) const;
    QVariantMap info() const;
    QVariantMap diskutilInfo(const QString &mountPoint) const;
    // The mount point of the only attached image, or empty.
    QString onlyMountPoint() const;

    // Mounts, loop devices and processes that still refer to the work folder,
    // and folders left in the mount root or the records' directory.
    QStringList leftovers() const;
    // Detaches everything and removes by force whatever is still left.
    void cleanUp() const;

private:
    Run run(const QString &tool, const QStringList &arguments, const QByteArray &input) const;

    QTemporaryDir m_directory;
    QString m_root;
    uid_t m_user;
    gid_t m_group;
    bool m_valid = false;
};

} // namespace kvlinux
