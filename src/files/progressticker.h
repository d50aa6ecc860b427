#pragma once

#include <QElapsedTimer>
#include <QString>

#include <cstdint>

class FileProgress;

// One run of a file routine as the progress window and the event loop see
// it: shows the window with its caption at the start (when there is one),
// moves the bar when the percentage changes, lets pending events run at most
// every 50 ms so timers keep ticking, and hides the window at the end.
class ProgressTicker {
public:
    // window may be null: no window, but events still run during the work.
    ProgressTicker(FileProgress *window, const QString &caption);
    ~ProgressTicker();
    ProgressTicker(const ProgressTicker &) = delete;
    ProgressTicker &operator=(const ProgressTicker &) = delete;

    // done of total units finished; total 0 counts as complete.
    void update(int64_t done, int64_t total);
    // Puts the bar back to 0 before the window is hidden (the CSV export).
    void resetBarAtEnd() { m_resetAtEnd = true; }

    static constexpr int eventInterval_ms = 50;

private:
    void letEventsRun();

    FileProgress *m_window;
    int m_percent = 0;
    bool m_resetAtEnd = false;
    QElapsedTimer m_sinceEvents;
};
