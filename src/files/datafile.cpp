#include "files/datafile.h"

#include "files/chunkwriter.h"
#include "files/datafilescanner.h"
#include "files/progressticker.h"
#include "files/recordlines.h"
#include "files/textformat.h"

#include <QFile>

#include <algorithm>
#include <cstring>

namespace {

const QString savingCaption = QStringLiteral("Saving file...");
const QString loadingCaption = QStringLiteral("Loading file...");

constexpr char crlf[] = "\r\n";

// The "°" of the temperature heading is the single byte 0xB0.
const QByteArray titleLines =
    QByteArray("\r\n"
               "Date\tTime\tWater [ppm]\tPressure [mBar]\tTemperature [") +
    char(0xB0) +
    QByteArray("C]\tSoot [%]\tRef ADC\tMeasure ADC\tStream\r\n"
               "\r\n");

QByteArray pairList(const CalTable &table) {
    QByteArray text;
    const int count = std::clamp<int>(table.count, 0, CalTable::capacity);
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            text += '\t';
        text += textformat::formatFixed(table.pairs[i].first, 5, '.');
        text += '\t';
        text += textformat::formatFixed(table.pairs[i].second, 0, '.');
    }
    return text;
}

bool writeAll(QIODevice &device, const QByteArray &bytes) {
    return device.write(bytes) != bytes.size();
}

// The seven header lines: threshold, oil name, the two calibration tables
// and the column titles.
bool writeHeader(QIODevice &device, float alarmThreshold, const QString &oilName,
                 const CalTable &calSource, const CalTable &calTable) {
    const QByteArray line1 =
        ":alarmthreshold=" + textformat::formatFixed(alarmThreshold, 0, '.') + crlf;
    const QByteArray line2 = ":oilname=" + oilName.toLatin1() + crlf;
    const QByteArray lines34 =
        ":calsource=" + pairList(calSource) + crlf + ":caltable=" + pairList(calTable) + crlf;
    return writeAll(device, line1) || writeAll(device, line2) || writeAll(device, lines34) ||
           writeAll(device, titleLines);
}

// One data line, tab-separated, ended by CR LF.
constexpr size_t maxDataLine = 10 + 8 + 7 * textformat::maxFixedLength + 8 + 2;

char *formatDataLine(const DataPoint &p, char *o) {
    using textformat::formatFixed;
    textformat::writeDate(p, o);
    o[10] = '\t';
    textformat::writeTime(p, o + 11);
    o[19] = '\t';
    o += 20;
    o += formatFixed<0>(p.water, '.', o);
    *o++ = '\t';
    o += formatFixed<2>(p.pressure, '.', o);
    *o++ = '\t';
    o += formatFixed<2>(p.temperature, '.', o);
    *o++ = '\t';
    o += formatFixed<2>(p.soot, '.', o);
    *o++ = '\t';
    o += formatFixed<0>(p.adc_ref, '.', o);
    *o++ = '\t';
    o += formatFixed<0>(p.adc_meas, '.', o);
    *o++ = '\t';
    o += formatFixed<0>(float(p.stream), '.', o);
    *o++ = '\r';
    *o++ = '\n';
    return o;
}

// Progress for the snapshot writer, which shows none and lets no events run.
struct NoProgress {
    void update(int64_t, int64_t) {}
};

bool sameTable(const CalTable &a, const CalTable &b) {
    if (a.count != b.count)
        return false;
    for (int i = 0; i < std::clamp<int>(a.count, 0, CalTable::capacity); ++i) {
        if (a.pairs[i].first != b.pairs[i].first || a.pairs[i].second != b.pairs[i].second)
            return false;
    }
    return true;
}

QString deviceName(const QIODevice &device, const QString &name) {
    if (!name.isEmpty())
        return name;
    if (const auto *file = qobject_cast<const QFile *>(&device))
        return file->fileName();
    return QString();
}

} // namespace

DataFile::DataFile(MeasurementStore &store, FileProgress *progress)
    : m_store(store), m_progress(progress) {}

DataFile::~DataFile() = default;

FileResult DataFile::dataFile_save(const QString &fileName, bool showProgress) {
    ProgressTicker ticker(showProgress ? m_progress : nullptr, savingCaption);
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return FileResult::createFailed(fileName);
    return saveTo(file, fileName, ticker);
}

FileResult DataFile::dataFile_save(QIODevice &device, bool showProgress, const QString &name) {
    ProgressTicker ticker(showProgress ? m_progress : nullptr, savingCaption);
    if (!device.isWritable())
        return FileResult::createFailed(deviceName(device, name));
    return saveTo(device, deviceName(device, name), ticker);
}

FileResult DataFile::saveTo(QIODevice &device, const QString &name, ProgressTicker &ticker) {
    if (writeHeader(device, m_store.alarmThreshold, m_store.oilName, m_store.calSource,
                    m_store.calTable))
        return FileResult::writeFailed(name);
    if (writeLines(device, 0, m_store.dataPoint_count, ticker))
        return FileResult::writeFailed(name);
    m_store.data_changed = false;
    return FileResult::ok();
}

FileResult DataFile::dataFile_saveSnapshot(QIODevice &device, const DataFileSnapshot &snapshot,
                                           const QString &name) {
    if (!device.isWritable())
        return FileResult::createFailed(deviceName(device, name));
    NoProgress progress;
    if (writeHeader(device, snapshot.alarmThreshold, snapshot.oilName, snapshot.calSource,
                    snapshot.calTable) ||
        writePointLines(device, snapshot.points.data(), 0, int32_t(snapshot.points.size()),
                        maxDataLine, progress, formatDataLine))
        return FileResult::writeFailed(deviceName(device, name));
    return FileResult::ok();
}

bool DataFile::dataFile_writeLines(QIODevice *device, int32_t first, int32_t end) {
    ProgressTicker ticker(nullptr, QString());
    if (!device || !device->isWritable())
        return true;
    return writeLines(*device, first, end, ticker);
}

bool DataFile::writeLines(QIODevice &device, int32_t first, int32_t end, ProgressTicker &ticker) {
    return writeRecordLines(device, m_store, first, end, maxDataLine, ticker, formatDataLine);
}

void DataFileSnapshot::take(const MeasurementStore &store) {
    const auto *begin = store.dataPoints.data();
    points.assign(
        begin, begin + std::clamp<int32_t>(store.dataPoint_count, 0, MeasurementStore::capacity));
    alarmThreshold = store.alarmThreshold;
    oilName = store.oilName;
    calSource = store.calSource;
    calTable = store.calTable;
}

bool DataFileSnapshot::sameAs(const MeasurementStore &store) const {
    // Bytes, not values: a point rewritten in place counts as changed, which
    // at worst keeps a modified mark that could have gone.
    return int32_t(points.size()) == store.dataPoint_count &&
           (points.empty() || std::memcmp(points.data(), store.dataPoints.data(),
                                          points.size() * sizeof(DataPoint)) == 0) &&
           alarmThreshold == store.alarmThreshold && oilName == store.oilName &&
           sameTable(calSource, store.calSource) && sameTable(calTable, store.calTable);
}

FileResult DataFile::dataFile_load(const QString &fileName, MergeMode mode, bool showProgress) {
    ProgressTicker ticker(showProgress ? m_progress : nullptr, loadingCaption);
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return FileResult::openFailed(fileName);
    return loadFrom(file, mode, fileName, ticker);
}

FileResult DataFile::dataFile_load(QIODevice &device, MergeMode mode, bool showProgress,
                                   const QString &name) {
    ProgressTicker ticker(showProgress ? m_progress : nullptr, loadingCaption);
    if (!device.isReadable())
        return FileResult::openFailed(deviceName(device, name));
    return loadFrom(device, mode, deviceName(device, name), ticker);
}

FileResult DataFile::loadFrom(QIODevice &device, MergeMode mode, const QString &name,
                              ProgressTicker &ticker) {
    if (!m_loadBuffer) {
        m_loadBuffer = std::make_unique<DataPoint[]>(MeasurementStore::capacity);
        m_block = std::make_unique<char[]>(blockSize);
    }
    DataFileScanner scanner(m_loadBuffer.get(), MeasurementStore::capacity);
    scanner.reset(m_store.calSource, m_store.calTable);
    switch (scanner.scanDevice(device, m_block.get(), blockSize, ticker, device.size())) {
    case DataFileScanner::DeviceEnd::ReadFailed:
        return FileResult::readFailed(name);
    case DataFileScanner::DeviceEnd::Overflow:
        return FileResult::fileTooLarge(name, MeasurementStore::capacity);
    case DataFileScanner::DeviceEnd::Complete:
        break;
    }

    return scanner.mergeInto(m_store, mode, DataFileScanner::Tables::Always, name);
}
