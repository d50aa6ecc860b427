#pragma once

#include <QString>

// The shared progress window as the file routines see it: a caption and a
// bar running from 0 to 100. The program shows a small tool window behind
// it; the command-line tool and the tests use their own.
class FileProgress {
public:
    virtual ~FileProgress() = default;
    // Caption set, bar at 0, placed at a fifth of the screen, shown.
    virtual void progress_begin(const QString &caption) = 0;
    virtual void progress_setValue(int percent) = 0;
    virtual void progress_end() = 0;
};
