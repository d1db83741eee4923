#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

// A D-Bus daemon of the test's own, so that fake desktop services can be
// registered and driven without touching the machine's buses. Its policy lets
// anyone own any name and call anything.
class KVPrivateBus
{
public:
    KVPrivateBus()
    {
        const QString config = m_dir.filePath(QStringLiteral("bus.conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write the bus configuration");
        file.write("<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
                   " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                   "<busconfig><type>session</type><listen>unix:dir=" + QFile::encodeName(m_dir.path())
                   + "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
                     "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>\n");
        file.close();
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--config-file=") + config, QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (!m_daemon.waitForStarted(10000) || !m_daemon.waitForReadyRead(10000))
            qFatal("dbus-daemon did not start");
        m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
    }

    ~KVPrivateBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished(5000);
    }

    const QString &address() const { return m_address; }

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
    QString m_address;
};

// The process's session bus and a stand-in for its system bus, each a private
// daemon. Make it before the application object: Qt reads the addresses when
// it first reaches for a bus, which the application may do as it starts.
struct KVPrivateBuses
{
    KVPrivateBus session;
    KVPrivateBus system;

    KVPrivateBuses()
    {
        qputenv("DBUS_SESSION_BUS_ADDRESS", session.address().toUtf8());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", system.address().toUtf8());
    }
};
