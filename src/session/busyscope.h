#pragma once

#include "session/monitorsession.h"

// Marks the session busy for one file command; nested scopes (the save
// prompt's Save inside Open) keep it busy until the outer one ends.
class MonitorSession::BusyScope {
public:
    explicit BusyScope(MonitorSession &s) : m_session(s), m_outer(!s.m_busy) {
        if (m_outer) {
            s.m_busy = true;
            emit s.busyChanged(true);
        }
    }
    ~BusyScope() {
        if (m_outer) {
            m_session.m_busy = false;
            emit m_session.busyChanged(false);
        }
    }
    BusyScope(const BusyScope &) = delete;
    BusyScope &operator=(const BusyScope &) = delete;

private:
    MonitorSession &m_session;
    bool m_outer;
};
