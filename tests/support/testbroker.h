#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

// A Mosquitto broker of the test's own on a free loopback port, with its
// configuration in a temporary folder; stopped by its process id, never by
// name. Extra configuration lines (a TLS listener, a password file,
// persistence) are added to the plain listener's.
class TestBroker {
public:
    // persistent: the broker keeps its clients' sessions over a restart.
    explicit TestBroker(const QString &extra = QString(), bool persistent = false)
        : m_port(freePort()) {
        // Started as root, Mosquitto drops to its own user, which must still
        // reach the folder (and a persistence folder it may write).
        allowBroker(m_dir.path());
        QString lines = extra;
        if (persistent) {
            QDir(m_dir.path()).mkdir(QStringLiteral("db"));
            QFile::setPermissions(m_dir.filePath(QStringLiteral("db")), QFile::Permissions(0x7777));
            lines += QStringLiteral("persistence true\npersistence_location %1/\n")
                         .arg(m_dir.filePath(QStringLiteral("db")));
        }
        QFile conf(m_dir.filePath(QStringLiteral("mosquitto.conf")));
        if (conf.open(QIODevice::WriteOnly)) {
            conf.write(QStringLiteral("listener %1 127.0.0.1\nallow_anonymous true\n"
                                      "persistence false\nlog_dest stderr\n"
                                      "log_type error\nlog_type warning\nlog_type notice\n"
                                      "log_type information\n")
                           .arg(m_port)
                           .toUtf8());
            conf.write(lines.toUtf8());
        }
    }
    ~TestBroker() { stop(); }

    // Starts (again) on the same port; true when it did not come up.
    bool start() {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral("mosquitto"),
                        {QStringLiteral("-c"), m_dir.filePath(QStringLiteral("mosquitto.conf"))});
        if (!m_process.waitForStarted(5000))
            return true;
        // Up when it says it runs (its notice line), or gone.
        QByteArray said;
        QSignalSpy out(&m_process, &QProcess::readyRead);
        while (!said.contains(" running")) {
            if (m_process.state() != QProcess::Running || !out.wait(10000)) {
                qWarning("mosquitto: %s", (said + m_process.readAll()).constData());
                return true;
            }
            said += m_process.readAll();
        }
        return false;
    }
    void stop() {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate(); // SIGTERM to its process id
        if (!m_process.waitForFinished(10000))
            m_process.kill();
        m_process.waitForFinished(5000);
    }

    int port() const { return m_port; }
    QString url() const { return QStringLiteral("mqtt://127.0.0.1:%1").arg(m_port); }
    QString path(const QString &name) const { return m_dir.filePath(name); }

    // Lets the broker's own user read the file or enter the folder.
    static void allowBroker(const QString &path) {
        QFile::setPermissions(path, QFile::permissions(path) | QFile::ReadGroup | QFile::ReadOther |
                                        (QFileInfo(path).isDir() ? QFile::ExeGroup | QFile::ExeOther
                                                                 : QFile::Permissions()));
    }

    // A free port on the loopback interface, from the system.
    static int freePort() {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a = {};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        int port = 0;
        if (::bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0 &&
            ::getsockname(fd, reinterpret_cast<sockaddr *>(&a), &len) == 0)
            port = ntohs(a.sin_port);
        ::close(fd);
        return port;
    }

private:
    QTemporaryDir m_dir;
    int m_port;
    QProcess m_process;
};
