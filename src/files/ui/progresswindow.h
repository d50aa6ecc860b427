#pragma once

#include "files/fileprogress.h"

#include <QWidget>

class QProgressBar;

// The shared progress window of the file routines: a small tool window with
// one bar from 0 to 100, its caption set by the routine that shows it
// ("Loading file...", "Saving file..."), placed at a fifth of the screen's
// width and height each time it is shown.
class ProgressWindow : public QWidget, public FileProgress {
    Q_OBJECT
public:
    explicit ProgressWindow(QWidget *parent = nullptr);

    void progress_begin(const QString &caption) override;
    void progress_setValue(int percent) override;
    void progress_end() override;

    int value() const;

private:
    QProgressBar *ProgressBar1;
};
