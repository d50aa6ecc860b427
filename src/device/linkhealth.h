#pragma once

#include "device/listreply.h"

#include <QDateTime>

#include <cstdint>

// How one poll's "list" exchange ended, for the windows, the recorder's
// status line and the telemetry publisher.
struct PollOutcome {
    enum class Status {
        Readings,    // at least one reading entered the store
        NothingNew,  // an answer, but no new reading (duplicates, full, empty)
        PortMissing, // the port could not be opened
        NoEcho,      // something came back, but not the echoed command
    };
    Status status = Status::NothingNew;
    ListReplyResult list; // what the reply did to the store
};

// Counters of the link since the program started: what an unattended
// station reports so a person can tell a quiet sensor from a dead one.
struct LinkHealth {
    uint64_t pollsWithReadings = 0;
    uint64_t pollsWithoutPort = 0;
    uint64_t repliesWithoutEcho = 0;
    uint64_t bytesReceived = 0;
    QDateTime lastReading; // when the last new reading entered the store; null: none yet
};
