#include "stopsignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#ifdef Q_OS_UNIX
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

int g_pipe[2] = {-1, -1};

void onSignal(int sig) {
    const char c = sig == SIGUSR1 ? 's' : 'x';
    [[maybe_unused]] const ssize_t n = ::write(g_pipe[1], &c, 1);
}

} // namespace

struct StopSignals::Old {
    struct sigaction interrupt = {};
    struct sigaction terminate = {};
    struct sigaction user1 = {};
    bool withStatus = false;
};

StopSignals::StopSignals(std::function<void()> status) {
    if (::pipe(g_pipe) != 0)
        return;
    for (int fd : g_pipe)
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(g_pipe[0], QSocketNotifier::Read);
    m_old = std::make_unique<Old>();
    m_old->withStatus = bool(status);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [status = std::move(status)] {
                         char c;
                         bool stop = false;
                         while (::read(g_pipe[0], &c, 1) > 0) {
                             if (c == 's')
                                 status();
                             else
                                 stop = true;
                         }
                         if (stop)
                             QCoreApplication::exit(0);
                     });
    struct sigaction sa = {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    ::sigaction(SIGINT, &sa, &m_old->interrupt);
    ::sigaction(SIGTERM, &sa, &m_old->terminate);
    if (m_old->withStatus)
        ::sigaction(SIGUSR1, &sa, &m_old->user1);
}

StopSignals::~StopSignals() {
    if (!m_notifier)
        return;
    ::sigaction(SIGINT, &m_old->interrupt, nullptr);
    ::sigaction(SIGTERM, &m_old->terminate, nullptr);
    if (m_old->withStatus)
        ::sigaction(SIGUSR1, &m_old->user1, nullptr);
    m_notifier.reset();
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
}
#else
StopSignals::StopSignals(std::function<void()>) {}
StopSignals::~StopSignals() = default;
#endif
