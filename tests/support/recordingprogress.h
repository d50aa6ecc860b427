#pragma once

#include "files/fileprogress.h"

#include <QStringList>

// A progress window that records its captions and each end as "end".
class RecordingProgress : public FileProgress {
public:
    void progress_begin(const QString &caption) override { captions << caption; }
    void progress_setValue(int) override {}
    void progress_end() override { captions << QStringLiteral("end"); }
    QStringList captions;
};
