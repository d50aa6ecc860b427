#include "files/progressticker.h"

#include "files/fileprogress.h"

#include <QCoreApplication>

ProgressTicker::ProgressTicker(FileProgress *window, const QString &caption) : m_window(window) {
    m_sinceEvents.start();
    if (m_window) {
        m_window->progress_begin(caption);
        letEventsRun();
    }
}

ProgressTicker::~ProgressTicker() {
    if (!m_window)
        return;
    if (m_resetAtEnd)
        m_window->progress_setValue(0);
    m_window->progress_end();
}

void ProgressTicker::update(int64_t done, int64_t total) {
    int percent = total > 0 ? int(done * 100 / total) : 100;
    percent = percent < 0 ? 0 : (percent > 100 ? 100 : percent);
    if (m_window && percent != m_percent)
        m_window->progress_setValue(percent);
    m_percent = percent;
    if (m_sinceEvents.elapsed() >= eventInterval_ms)
        letEventsRun();
}

void ProgressTicker::letEventsRun() {
    if (QCoreApplication::instance())
        QCoreApplication::processEvents();
    m_sinceEvents.restart();
}
