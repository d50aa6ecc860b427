// The session's part for unattended recording stations: the store's
// rollover into archive files beside the recorder's output.
#include "session/monitorsession.h"

#include "core/timetext.h"
#include "device/devicelink.h"
#include "files/datafile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {

QString compactStamp(const DataPoint &p) {
    return pad4(p.year) + pad2(p.month) + pad2(p.day) + QLatin1Char('T') + pad2(p.hour) +
           pad2(p.minute) + pad2(p.second);
}

} // namespace

QString MonitorSession::rolloverFileName(const QString &outputFile, const MeasurementStore &store) {
    const QFileInfo output(outputFile);
    QString stem = output.completeBaseName();
    if (store.dataPoint_count > 0) {
        stem += QLatin1Char('_') + compactStamp(store.dataPoints.front()) + QLatin1Char('_') +
                compactStamp(store.dataPoints[size_t(store.dataPoint_count - 1)]);
    }
    const QDir dir = output.dir();
    QString name = dir.filePath(stem + QLatin1String(".txt"));
    for (int n = 2; QFileInfo::exists(name); ++n)
        name = dir.filePath(stem + QLatin1Char('_') + QString::number(n) + QLatin1String(".txt"));
    return name;
}

void MonitorSession::recording_setRollover(const QString &outputFile) {
    m_rolloverOutput = outputFile;
    if (outputFile.isEmpty()) {
        m_link->setWhenFull({});
        return;
    }
    m_link->setWhenFull([this] { (void)recording_rollOver(); });
}

bool MonitorSession::recording_rollOver() {
    const QString fileName = rolloverFileName(m_rolloverOutput, m_store);
    const int points = m_store.dataPoint_count;
    QSaveFile file(fileName);
    FileResult result = FileResult::ok();
    if (!file.open(QIODevice::WriteOnly))
        result = FileResult::createFailed(fileName);
    else if (result = m_dataFile->dataFile_save(file, false, fileName); !result.failed()) {
        if (!file.commit())
            result = FileResult::writeFailed(fileName);
    }
    if (result.failed()) {
        m_store.data_changed = true;
        emit rolledOver(fileName, points, result.message);
        return true;
    }
    m_store.rollOver();
    emit rolledOver(fileName, points, QString());
    return false;
}
