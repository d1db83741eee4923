#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>
#include <QStringList>
#include <QTemporaryDir>

// A stand-in for a disk tool: a small shell script that records each run's
// arguments and standard input and answers with prepared output and an exit
// status. Runs are numbered from 1; a response prepared for a run number is
// used for that run, the default response for every other.
class KVToolDouble
{
public:
    explicit KVToolDouble(const QString &name = QStringLiteral("tool"))
    {
        m_path = m_dir.filePath(name);
        write(m_path, QByteArrayLiteral("#!/bin/sh\n"
                                        "d='") + QFile::encodeName(m_dir.path()) + QByteArrayLiteral("'\n"
                                        "n=$(($(cat \"$d/count\" 2>/dev/null || echo 0) + 1))\n"
                                        "for a in \"$@\"; do printf '%s\\0' \"$a\"; done > \"$d/argv.$n\"\n"
                                        // Counted only once its arguments are complete, and in one rename,
                                        // so that a test polling the count never reads a run half-recorded.
                                        "echo $n > \"$d/count.new\" && mv \"$d/count.new\" \"$d/count\"\n"
                                        "if [ -p /dev/stdin ]; then echo pipe > \"$d/stdin-kind.$n\"; fi\n"
                                        "cat > \"$d/stdin.$n\"\n"
                                        "r=default; [ -f \"$d/out.$n\" ] && r=$n\n"
                                        "if [ -f \"$d/script.$r\" ]; then . \"$d/script.$r\"; fi\n"
                                        "[ -f \"$d/out.$r\" ] && cat \"$d/out.$r\"\n"
                                        "exit $(cat \"$d/status.$r\" 2>/dev/null || echo 0)\n"));
        QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        setResponse(QByteArray());
    }

    QString path() const { return m_path; }
    QString directory() const { return m_dir.path(); }

    // What every run prints (standard output) and its exit status.
    void setResponse(const QByteArray &output, int status = 0) { respond(QStringLiteral("default"), output, status); }
    void setResponse(int run, const QByteArray &output, int status = 0) { respond(QString::number(run), output, status); }
    void setResponseFromFile(const QString &fixture, int status = 0) { setResponse(readFixture(fixture), status); }
    // Shell commands run before the prepared output is printed (to print in
    // pieces, wait, or kill itself). `$d` is the double's folder, "$@" the arguments.
    void setScript(const QByteArray &commands, int run = 0)
    {
        const QString key = run > 0 ? QString::number(run) : QStringLiteral("default");
        if (run > 0 && !QFile::exists(m_dir.filePath(QStringLiteral("out.") + key)))
            write(m_dir.filePath(QStringLiteral("out.") + key), QByteArray());
        write(m_dir.filePath(QStringLiteral("script.") + key), commands);
    }

    // A file in the double's folder, for scripts to print ("$d/<name>").
    void addFile(const QString &name, const QByteArray &bytes) { write(m_dir.filePath(name), bytes); }

    int runCount() const { return read(QStringLiteral("count")).trimmed().toInt(); }

    QStringList arguments(int run = 1) const
    {
        QStringList arguments;
        const QByteArray raw = read(QStringLiteral("argv.%1").arg(run));
        for (const QByteArray &argument : raw.split('\0'))
            arguments.append(QString::fromUtf8(argument));
        arguments.removeLast(); // after the last terminator
        return arguments;
    }
    QByteArray standardInput(int run = 1) const { return read(QStringLiteral("stdin.%1").arg(run)); }
    bool standardInputWasPipe(int run = 1) const
    {
        return QFile::exists(m_dir.filePath(QStringLiteral("stdin-kind.%1").arg(run)));
    }

    static QByteArray readFixture(const QString &relativePath)
    {
        QFile file(QStringLiteral(KV_TEST_FIXTURES "/") + relativePath);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("missing fixture %s", qPrintable(relativePath));
        return file.readAll();
    }

private:
    void respond(const QString &key, const QByteArray &output, int status)
    {
        write(m_dir.filePath(QStringLiteral("out.") + key), output);
        write(m_dir.filePath(QStringLiteral("status.") + key), QByteArray::number(status));
    }

    QByteArray read(const QString &name) const
    {
        QFile file(m_dir.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
    }

    QTemporaryDir m_dir;
    QString m_path;
};
