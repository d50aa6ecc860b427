#pragma once

#include <QtGlobal>

#include <memory>

class QSocketNotifier;

// Ctrl-C and SIGTERM end the event loop through a pipe, so the work after
// the loop (writing files) is done by ordinary code, not inside a signal
// handler. One at a time.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();

private:
#ifdef Q_OS_UNIX
    std::unique_ptr<QSocketNotifier> m_notifier;
    void *m_old = nullptr; // the handlers before, restored at the end
#endif
};
