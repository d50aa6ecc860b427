#pragma once

// Test doubles for the file routines: a host and a progress window that
// record what they are told, a device that fails after a number of bytes,
// and the small store the golden files were written by hand for.

#include "files/filehost.h"

#include "core/store.h"

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstring>

class RecordingHost : public FileHost {
public:
    explicit RecordingHost(MeasurementStore &store) : m_store(store) {}
    void titleRefresh() override { ++titleRefreshes; }
    void display_data() override { ++displayRebuilds; }
    void oilName_set(const QString &name) override {
        oilNames << name;
        m_store.oilName = name;
    }
    int titleRefreshes = 0;
    int displayRebuilds = 0;
    QStringList oilNames;

private:
    MeasurementStore &m_store;
};

class RecordingProgress : public FileProgress {
public:
    void progress_begin(const QString &caption) override {
        captions << caption;
        visible = true;
        values << 0;
    }
    void progress_setValue(int percent) override { values << percent; }
    void progress_end() override {
        visible = false;
        ++ends;
    }
    QStringList captions;
    QList<int> values;
    bool visible = false;
    int ends = 0;
};

// Accepts writes until `writeLimit` bytes are taken (then writes come up
// short) and serves `data` to reads until `readLimit` bytes, then fails.
class FailingDevice : public QIODevice {
public:
    explicit FailingDevice(qint64 writeLimit, QByteArray data = {}, qint64 readLimit = -1)
        : m_writeLimit(writeLimit), m_data(std::move(data)), m_readLimit(readLimit) {}
    QByteArray written;

protected:
    qint64 writeData(const char *data, qint64 size) override {
        const qint64 n = std::min(size, m_writeLimit - qint64(written.size()));
        if (n <= 0)
            return -1;
        written.append(data, n);
        return n;
    }
    qint64 readData(char *data, qint64 size) override {
        if (m_readLimit >= 0 && m_readPos >= m_readLimit)
            return -1;
        qint64 n = std::min(size, qint64(m_data.size()) - m_readPos);
        if (m_readLimit >= 0)
            n = std::min(n, m_readLimit - m_readPos);
        std::memcpy(data, m_data.constData() + m_readPos, size_t(n));
        m_readPos += n;
        return n;
    }

private:
    qint64 m_writeLimit;
    QByteArray m_data;
    qint64 m_readLimit;
    qint64 m_readPos = 0;
};

inline DataPoint point(int year, int month, int day, int hour, int minute, int second,
                       float water = 0, float pressure = 0, float temperature = 0, float soot = 0,
                       float adcRef = 0, float adcMeas = 0, int stream = 0) {
    DataPoint p;
    p.year = int16_t(year);
    p.month = uint8_t(month);
    p.day = uint8_t(day);
    p.hour = uint8_t(hour);
    p.minute = uint8_t(minute);
    p.second = uint8_t(second);
    p.water = water;
    p.pressure = pressure;
    p.temperature = temperature;
    p.soot = soot;
    p.adc_ref = adcRef;
    p.adc_meas = adcMeas;
    p.stream = int16_t(stream);
    return p;
}

inline bool samePoint(const DataPoint &a, const DataPoint &b) {
    return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
           a.minute == b.minute && a.second == b.second && a.water == b.water &&
           a.pressure == b.pressure && a.temperature == b.temperature && a.soot == b.soot &&
           a.adc_ref == b.adc_ref && a.adc_meas == b.adc_meas && a.stream == b.stream;
}

// The store tests/data/files/small.txt and small.csv were written for.
inline void fillSmallStore(MeasurementStore &store) {
    store.alarmThreshold = 850.0f;
    store.oilName = QStringLiteral("Turbine oil T46");
    store.calSource.count = 2;
    store.calSource.pairs[0] = {0.125f, 150.0f};
    store.calSource.pairs[1] = {0.25f, 300.0f};
    store.calTable.count = 1;
    store.calTable.pairs[0] = {1.5f, 2000.0f};
    const DataPoint points[] = {
        point(2024, 3, 7, 9, 5, 0, 123, 1013.25f, 45.1f, 0.35f, 31245, 28790, 2),
        point(2024, 3, 7, 9, 5, 4, 1234.6f, 999.999f, -5.125f, 0, 0.5f, 2.5f, 0),
        point(999, 12, 31, 23, 59, 59, 0.4f, 0.004f, -0.004f, 100, 65535, 1e6f, 6),
    };
    store.merge(points, 3, MergeMode::Replace);
    store.data_changed = true;
}

inline QByteArray fileBytes(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline QString testData(const char *name) {
    return QStringLiteral(NAKOS_TEST_DATA "/files/") + QLatin1String(name);
}
