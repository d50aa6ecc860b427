#include "stopsignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#ifdef Q_OS_UNIX
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

int g_pipe[2] = {-1, -1};

void onStopSignal(int) {
    const char c = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_pipe[1], &c, 1);
}

struct OldHandlers {
    struct sigaction interrupt = {};
    struct sigaction terminate = {};
};

} // namespace

StopSignals::StopSignals() {
    if (::pipe(g_pipe) != 0)
        return;
    for (int fd : g_pipe)
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(g_pipe[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [] {
        char c;
        while (::read(g_pipe[0], &c, 1) > 0) {
        }
        QCoreApplication::exit(0);
    });
    auto *old = new OldHandlers;
    m_old = old;
    struct sigaction sa = {};
    sa.sa_handler = onStopSignal;
    sigemptyset(&sa.sa_mask);
    ::sigaction(SIGINT, &sa, &old->interrupt);
    ::sigaction(SIGTERM, &sa, &old->terminate);
}

StopSignals::~StopSignals() {
    if (!m_notifier)
        return;
    auto *old = static_cast<OldHandlers *>(m_old);
    ::sigaction(SIGINT, &old->interrupt, nullptr);
    ::sigaction(SIGTERM, &old->terminate, nullptr);
    delete old;
    m_notifier.reset();
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
}
#else
StopSignals::StopSignals() = default;
StopSignals::~StopSignals() = default;
#endif
