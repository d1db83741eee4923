// Sequential throughput of an encrypted image, side by side with the disk it
// lives on and with AES-XTS in memory (openssl speed), the ceiling.
//
//   bench_imageio [--dir DIR] [--size MiB] [--runs N]
//
// Runs as root: the root data path (imagefs, loop device, kernel ext4) and
// the unprivileged one (imagefs and fuse2fs, as the user "nobody") are both
// measured, with the page cache dropped before every read. Each figure is the
// median of N runs. The images are made by the real hdiutil (Argon2id), so
// creating and attaching take a few seconds each.

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 block = 1 << 20;
const QByteArray password = QByteArrayLiteral("benchmark");

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

// Writes size bytes in 1 MiB blocks and syncs; returns MB/s.
double writeFile(const QString &path, qint64 size)
{
    QByteArray data(block, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(data.data()), block / 4);
    const int fd = open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return 0;
    QElapsedTimer clock;
    clock.start();
    for (qint64 done = 0; done < size; done += block)
        if (write(fd, data.constData(), block) != block) {
            close(fd);
            return 0;
        }
    fsync(fd);
    close(fd);
    return size / 1e6 / (clock.nsecsElapsed() / 1e9);
}

double readFile(const QString &path)
{
    QByteArray data(block, Qt::Uninitialized);
    const int fd = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return 0;
    QElapsedTimer clock;
    clock.start();
    qint64 total = 0;
    for (ssize_t n; (n = read(fd, data.data(), block)) > 0;)
        total += n;
    close(fd);
    return total / 1e6 / (clock.nsecsElapsed() / 1e9);
}

void dropCaches()
{
    sync();
    QFile drop(QStringLiteral("/proc/sys/vm/drop_caches"));
    if (drop.open(QIODevice::WriteOnly))
        drop.write("3\n");
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values[values.size() / 2];
}

struct Result
{
    int exitCode = -1;
    QByteArray output;
};

Result run(const QStringList &command, const QStringList &environment, const QByteArray &input = {})
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    if (!environment.isEmpty())
        process.setEnvironment(environment);
    process.start(command.first(), command.mid(1));
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(-1);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAll()};
}

// One way of attaching images: as root, or as "nobody" through setpriv.
class ImagePath
{
public:
    ImagePath(QString name, QString work, uid_t user, gid_t group)
        : m_name(std::move(name)), m_work(std::move(work)), m_user(user), m_group(group)
    {
        QDir().mkpath(runtime());
        QDir().mkpath(volumes());
        chmod(QFile::encodeName(runtime()).constData(), 0700);
        for (const QString &dir : {m_work, runtime(), volumes()})
            (void)!chown(QFile::encodeName(dir).constData(), m_user, m_group);
    }

    const QString &name() const { return m_name; }

    QStringList asUser(const QStringList &command) const
    {
        if (m_user == 0)
            return command;
        return QStringList{QStringLiteral("setpriv"), QStringLiteral("--reuid=%1").arg(m_user),
                           QStringLiteral("--regid=%1").arg(m_group), QStringLiteral("--clear-groups"),
                           QStringLiteral("--")}
            + command;
    }

    QStringList environment() const
    {
        return {QStringLiteral("XDG_RUNTIME_DIR=") + runtime(), QStringLiteral("HOME=") + m_work,
                QStringLiteral("PATH=/usr/local/bin:/usr/bin:/bin"), QStringLiteral("LC_ALL=C.UTF-8")};
    }

    // Creates and attaches an image big enough for the test file; returns
    // the mount point.
    QString attach(qint64 fileSize) const
    {
        const QString hdiutil = QStringLiteral(KORVELLE_LIBEXEC_DIR "/hdiutil");
        const QString megabytes = QString::number(fileSize / block + 128) + QLatin1Char('m');
        const Result created = run(asUser({hdiutil, QStringLiteral("create"), QStringLiteral("-stdinpass"),
                                           QStringLiteral("-fs"), QStringLiteral("Journaled HFS+"),
                                           QStringLiteral("-type"), QStringLiteral("SPARSE"), QStringLiteral("-size"),
                                           megabytes, QStringLiteral("-volname"), QStringLiteral("Bench"),
                                           QStringLiteral("-encryption"), QStringLiteral("AES-256"),
                                           m_work + QStringLiteral("/bench")}),
                                   environment(), password);
        const Result attached = run(asUser({hdiutil, QStringLiteral("attach"), QStringLiteral("-stdinpass"),
                                            m_work + QStringLiteral("/bench.sparseimage"),
                                            QStringLiteral("-mountroot"), volumes()}),
                                    environment(), password);
        if (created.exitCode != 0 || attached.exitCode != 0) {
            out() << m_name << ": " << created.output << attached.output << Qt::endl;
            return {};
        }
        return volumes() + QStringLiteral("/Bench");
    }

    void detach() const
    {
        run(asUser({QStringLiteral(KORVELLE_LIBEXEC_DIR "/hdiutil"), QStringLiteral("detach"),
                    QStringLiteral("-force"), volumes() + QStringLiteral("/Bench")}),
            environment());
    }

    // Write and read run in a child as the path's user (a FUSE mount is open
    // to its owner only); the caches are dropped in between, as root.
    double measureWrite(const QString &file, qint64 size) const
    {
        return measure({QStringLiteral("--write"), file, QString::number(size)});
    }
    double measureRead(const QString &file) const
    {
        return measure({QStringLiteral("--read"), file});
    }
    void remove(const QString &file) const
    {
        run(asUser({QStringLiteral("rm"), QStringLiteral("-f"), file}), environment());
    }

private:
    QString runtime() const { return m_work + QStringLiteral("/runtime"); }
    QString volumes() const { return m_work + QStringLiteral("/volumes"); }
    double measure(const QStringList &arguments) const
    {
        const Result r = run(asUser(QStringList{QCoreApplication::applicationFilePath()} + arguments), environment());
        return r.exitCode == 0 ? r.output.trimmed().toDouble() : 0;
    }

    QString m_name;
    QString m_work;
    uid_t m_user;
    gid_t m_group;
};

double opensslCeiling()
{
    const Result speed = run({QStringLiteral("openssl"), QStringLiteral("speed"), QStringLiteral("-evp"),
                              QStringLiteral("aes-256-xts"), QStringLiteral("-bytes"), QStringLiteral("4096"),
                              QStringLiteral("-seconds"), QStringLiteral("2")},
                             {});
    // Last line: "AES-256-XTS    6848430.08k" (thousands of bytes per second).
    static const QRegularExpression figure(QStringLiteral("([0-9.]+)k\\s*$"));
    const auto match = figure.match(QString::fromUtf8(speed.output.trimmed()));
    return match.hasMatch() ? match.captured(1).toDouble() / 1000 : 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    // The child modes, run as the user of the measured path.
    if (args.size() == 4 && args[1] == QLatin1String("--write")) {
        out() << writeFile(args[2], args[3].toLongLong()) << Qt::endl;
        return 0;
    }
    if (args.size() == 3 && args[1] == QLatin1String("--read")) {
        out() << readFile(args[2]) << Qt::endl;
        return 0;
    }

    QString base = QDir::currentPath();
    qint64 size = 512 * block;
    int runs = 3;
    for (int i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--dir"))
            base = args[i + 1];
        else if (args[i] == QLatin1String("--size"))
            size = args[i + 1].toLongLong() * block;
        else if (args[i] == QLatin1String("--runs"))
            runs = args[i + 1].toInt();
    }
    if (geteuid() != 0) {
        out() << "bench_imageio measures the root and the unprivileged data path: run it as root." << Qt::endl;
        return 1;
    }
    QTemporaryDir work(base + QStringLiteral("/kvbench-XXXXXX"));
    if (!work.isValid()) {
        out() << "Cannot make a work folder in " << base << Qt::endl;
        return 1;
    }
    (void)!chmod(QFile::encodeName(work.path()).constData(), 0755);

    // Desktops open /dev/fuse to all users; machines without udev may not.
    struct stat fuse{};
    stat("/dev/fuse", &fuse);
    const mode_t fuseMode = fuse.st_mode & 07777;
    if ((fuseMode & 0666) != 0666)
        chmod("/dev/fuse", 0666);

    const passwd *nobody = getpwnam("nobody");
    const ImagePath rootPath(QStringLiteral("root path"), work.filePath(QStringLiteral("root")), 0, 0);
    const ImagePath userPath(QStringLiteral("unprivileged path"), work.filePath(QStringLiteral("user")),
                             nobody ? nobody->pw_uid : 65534, nobody ? nobody->pw_gid : 65534);
    const ImagePath diskPath(QStringLiteral("raw disk"), work.filePath(QStringLiteral("disk")), 0, 0);

    out() << "Sequential " << size / block << " MiB, 1 MiB blocks, fsync after writing, caches dropped "
          << "before reading; median of " << runs << " runs, in " << work.path() << Qt::endl;
    const QString rootVolume = rootPath.attach(size);
    const QString userVolume = userPath.attach(size);
    struct Row
    {
        const ImagePath *path;
        QString folder; // empty when the image could not be attached
        QList<double> writes, reads;
    };
    QList<Row> rows = {{&diskPath, work.filePath(QStringLiteral("disk")), {}, {}},
                       {&rootPath, rootVolume, {}, {}},
                       {&userPath, userVolume, {}, {}}};
    // Runs alternate between the paths, so that a busy disk hurts all alike.
    for (int i = 0; i < runs; ++i) {
        for (Row &row : rows) {
            if (row.folder.isEmpty())
                continue;
            const QString file = row.folder + QStringLiteral("/file");
            dropCaches();
            row.writes.append(row.path->measureWrite(file, size));
            dropCaches();
            row.reads.append(row.path->measureRead(file));
            row.path->remove(file);
        }
    }
    rootPath.detach();
    userPath.detach();
    if ((fuseMode & 0666) != 0666)
        chmod("/dev/fuse", fuseMode);

    const double diskWrite = median(rows[0].writes);
    out() << Qt::endl << QStringLiteral("%1 %2 %3 %4").arg(QString(), -20).arg(QStringLiteral("write MB/s"), 12)
                 .arg(QStringLiteral("read MB/s"), 12).arg(QStringLiteral("write vs disk"), 15)
          << Qt::endl;
    for (const Row &row : rows) {
        const double write = median(row.writes);
        out() << QStringLiteral("%1 %2 %3 %4").arg(row.path->name(), -20).arg(write, 12, 'f', 0)
                     .arg(median(row.reads), 12, 'f', 0)
                     .arg(QStringLiteral("%1 %").arg(diskWrite > 0 ? 100 * write / diskWrite : 0, 0, 'f', 0), 15)
              << Qt::endl;
    }
    out() << QStringLiteral("%1 %2 %3").arg(QStringLiteral("openssl aes-256-xts"), -20)
                 .arg(opensslCeiling(), 12, 'f', 0).arg(QStringLiteral("(in memory, one core)"), 25)
          << Qt::endl;
    return 0;
}
