#include "files/csvexport.h"

#include "files/chunkwriter.h"
#include "files/fileprogress.h"
#include "files/progressticker.h"
#include "files/recordlines.h"
#include "files/textformat.h"

#include "core/store.h"

#include <QFile>

#include <algorithm>
#include <cstring>

namespace {

constexpr char crlf[] = "\r\n";
const QByteArray separator = QByteArrayLiteral(";");

QByteArray quoted(const QByteArray &text) {
    return '"' + text + '"';
}

QByteArray number(float value, int decimals) {
    return textformat::formatFixed(value, decimals, ',');
}

// Label line, one line per pair, and the blank line only after the source.
QByteArray calBlock(const char *label, const CalTable &table, bool blankLineAfter) {
    QByteArray text =
        quoted(label) + separator + quoted({}) + separator + quoted("Water [ppm]") + crlf;
    const int count = std::clamp<int>(table.count, 0, CalTable::capacity);
    for (int i = 0; i < count; ++i) {
        text += quoted({}) + separator + quoted(number(table.pairs[i].first, 5)) + separator +
                quoted(number(table.pairs[i].second, 0)) + crlf;
    }
    if (blankLineAfter)
        text += crlf;
    return text;
}

QByteArray titleLines() {
    // The "°" is the single byte 0xB0.
    const QByteArray temperature = QByteArray("Temperature [") + char(0xB0) + "C]";
    const QByteArray titles[] = {
        "Date",     "Time",    temperature,  "Water [ppm]", "Pressure [mBar]",
        "Soot [%]", "Ref ADC", "Measure ADC"};
    QByteArray text = crlf;
    for (const QByteArray &t : titles) {
        if (&t != &titles[0])
            text += separator;
        text += quoted(t);
    }
    return text + crlf + crlf;
}

bool writeAll(QIODevice &device, const QByteArray &bytes) {
    return device.write(bytes) != bytes.size();
}

template <int Decimals> inline void quotedNumber(char *&o, float value) {
    *o++ = '"';
    o += textformat::formatFixed<Decimals>(value, ',', o);
    *o++ = '"';
}

// Clears the busy flag however the export ends.
struct BusyScope {
    bool &flag;
    explicit BusyScope(bool &f) : flag(f) { flag = true; }
    ~BusyScope() { flag = false; }
};

} // namespace

CsvExport::CsvExport(MeasurementStore &store, FileProgress *progress)
    : m_store(store), m_progress(progress) {}

template <typename Open> FileResult CsvExport::guarded(bool showProgress, Open open) {
    if (m_busy)
        return m_last;
    BusyScope busy(m_busy);
    ProgressTicker ticker(showProgress ? m_progress : nullptr, QStringLiteral("Saving file..."));
    ticker.resetBarAtEnd();
    m_last = open(ticker);
    return m_last;
}

FileResult CsvExport::csvFile_export(const QString &fileName, bool showProgress) {
    return guarded(showProgress, [&](ProgressTicker &ticker) {
        QFile file(fileName);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
            return FileResult::createFailed(fileName);
        return exportTo(file, fileName, ticker);
    });
}

FileResult CsvExport::csvFile_export(QIODevice &device, bool showProgress, const QString &name) {
    return guarded(showProgress, [&](ProgressTicker &ticker) {
        if (!device.isWritable())
            return FileResult::createFailed(name);
        return exportTo(device, name, ticker);
    });
}

FileResult CsvExport::exportTo(QIODevice &device, const QString &name, ProgressTicker &ticker) {
    const QByteArray line1 =
        quoted("alarmthreshold") + separator + quoted(number(m_store.alarmThreshold, 0)) + crlf;
    const QByteArray line2 =
        quoted("oilname") + separator + quoted(m_store.oilName.toLatin1()) + crlf;
    const QByteArray blocks = calBlock("calsource", m_store.calSource, true) +
                              calBlock("caltable", m_store.calTable, false);
    if (writeAll(device, line1) || writeAll(device, line2) || writeAll(device, blocks) ||
        writeAll(device, titleLines()))
        return FileResult::writeFailed(name);
    if (writeLines(device, 0, m_store.dataPoint_count, separator, ticker))
        return FileResult::writeFailed(name);
    m_store.data_changed = false;
    return FileResult::ok();
}

bool CsvExport::csvFile_writeLines(QIODevice *device, int32_t first, int32_t end,
                                   const QByteArray &sep) {
    ProgressTicker ticker(nullptr, QString());
    if (!device || !device->isWritable())
        return true;
    return writeLines(*device, first, end, sep, ticker);
}

bool CsvExport::writeLines(QIODevice &device, int32_t first, int32_t end, const QByteArray &sep,
                           ProgressTicker &ticker) {
    const size_t sepSize = size_t(sep.size());
    const size_t maxLine = 8 * (textformat::maxFixedLength + 2) + 7 * sepSize + 2;
    const char *const sepData = sep.constData();
    auto separate = [&](char *&o) {
        if (sepSize == 1) {
            *o++ = sepData[0];
        } else {
            std::memcpy(o, sepData, sepSize);
            o += sepSize;
        }
    };
    const auto formatLine = [&](const DataPoint &p, char *o) {
        *o++ = '"';
        textformat::writeDate(p, o);
        o += 10;
        *o++ = '"';
        separate(o);
        *o++ = '"';
        textformat::writeTime(p, o);
        o += 8;
        *o++ = '"';
        separate(o);
        quotedNumber<2>(o, p.temperature);
        separate(o);
        quotedNumber<0>(o, p.water);
        separate(o);
        quotedNumber<2>(o, p.pressure);
        separate(o);
        quotedNumber<2>(o, p.soot);
        separate(o);
        quotedNumber<0>(o, p.adc_ref);
        separate(o);
        quotedNumber<0>(o, p.adc_meas);
        *o++ = '\r';
        *o++ = '\n';
        return o;
    };
    return writeRecordLines(device, m_store, first, end, maxLine, ticker, formatLine);
}
