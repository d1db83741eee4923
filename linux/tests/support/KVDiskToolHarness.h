#pragma once

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

class QProcess;

namespace kvlinux {

// A disk for the disk verbs to work on: a file with a GPT partition table
// behind a loop device (never one of the machine's disks), an ext4 partition
// and a FAT one, and the test build of the disk programs (cheap key
// derivation) run with a runtime directory of their own. Everything the
// programs made is taken down at the end, also when a test fails half way.
class KVDiskToolHarness
{
public:
    struct Run
    {
        int exitCode = -1;
        QString output;
        bool has(const QString &text) const { return output.contains(text); }
    };

    // Fixed: the disk's file lives in a temporary folder. Removable: on a
    // file system of its own, which unplug() shuts down (every read and
    // write of the disk fails from then on, as when a cable is pulled) and
    // plugBackIn() mounts again, the disk coming back under another name.
    enum class Drive { Fixed, Removable };

    // ext4Size, fatSize: "200M"...
    KVDiskToolHarness(const QString &ext4Size, const QString &fatSize, Drive drive = Drive::Fixed);
    ~KVDiskToolHarness();

    // Why this cannot run here (not root, no loop devices); empty when it can.
    static QString unavailable();
    bool isValid() const { return m_valid; }

    QString ext4Partition() const { return m_loop + QStringLiteral("p1"); } // "loopNp1"
    QString fatPartition() const { return m_loop + QStringLiteral("p2"); }
    QString mountPoint() const { return m_root + QStringLiteral("/mnt"); }
    QString runtimeDirectory() const { return m_root + QStringLiteral("/runtime"); }
    QString stateDirectory() const { return m_root + QStringLiteral("/state"); }

    // environment: "NAME=value" settings added to the programs' own.
    Run diskutil(const QStringList &arguments, const QByteArray &input = QByteArray(),
                 const QStringList &environment = {}) const;
    Run systemProfiler() const;
    Run shell(const QString &script) const;
    // The same diskutil command lines run side by side, all started before
    // any is waited for.
    QList<Run> diskutilTogether(const QList<QStringList> &commands, const QByteArray &input) const;

    bool unplug() const;
    bool plugBackIn();

    // No conversion lock of the disk programs is held by anybody.
    bool conversionLocksAreFree() const;
    // What the background converters said when they stopped.
    QString conversionLogs() const;

    // The process id of the background converter once it has converted its
    // first bytes; 0 when none has within 20 seconds.
    qint64 busyConverter() const;

    // Mounts the ext4 partition and fills it with files of random data;
    // returns their checksums.
    QString fillWithFiles(int megabytes) const;
    // Checksums of the files in a folder, as fillWithFiles gives them.
    QString checksums(const QString &folder) const;

private:
    Run run(const QString &program, const QStringList &arguments, const QByteArray &input,
            const QStringList &extraEnvironment = {}) const;
    void prepare(QProcess &process, const QStringList &extraEnvironment) const;
    // Attaches the disk's file and waits for its partitions; the loop device's name.
    QString attach(const QString &file) const;
    void cleanUp() const;

    QTemporaryDir m_directory;
    QString m_root;
    QString m_loop; // "loopN"
    QString m_diskFile;
    bool m_removable = false;
    bool m_valid = false;
};

} // namespace kvlinux
