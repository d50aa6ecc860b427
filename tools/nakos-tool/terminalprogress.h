#pragma once

#include "files/fileprogress.h"

#include <QElapsedTimer>
#include <QString>

#include <cstdio>
#include <memory>

// The progress window of the file routines as one line on a terminal:
// "nakos-tool: Loading file...  42%", redrawn in place. Nothing appears
// until the run has taken longer than `delay` (short conversions stay
// silent), and the line is wiped when a routine ends, so only the
// command's own messages remain on the screen.
class TerminalProgress : public FileProgress {
public:
    TerminalProgress(std::FILE *out, qint64 delayMs);
    ~TerminalProgress() override;

    // Progress on standard error after half a second when standard error is
    // a terminal; nothing (null) when it goes to a pipe or a file.
    static std::unique_ptr<TerminalProgress> onStandardError();

    void progress_begin(const QString &caption) override;
    void progress_setValue(int percent) override;
    void progress_end() override;

private:
    void draw();
    void wipe();

    std::FILE *m_out;
    qint64 m_delayMs;
    QElapsedTimer m_sinceStart;
    QString m_caption;
    int m_percent = 0;
    int m_shownWidth = 0; // characters on the line now; 0 when it is clear
};
