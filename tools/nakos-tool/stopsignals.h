#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

class QSocketNotifier;

// Ctrl-C and SIGTERM end the event loop through a pipe, so the work after
// the loop (writing files) is done by ordinary code, not inside a signal
// handler. With a status function, SIGUSR1 goes through the same pipe and
// calls it. One at a time.
class StopSignals {
public:
    explicit StopSignals(std::function<void()> status = {});
    ~StopSignals();

private:
#ifdef Q_OS_UNIX
    std::unique_ptr<QSocketNotifier> m_notifier;
    struct Old;
    std::unique_ptr<Old> m_old; // the handlers before, restored at the end
#endif
};
