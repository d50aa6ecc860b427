#pragma once

// Test doubles for the file routines: a host and a progress window that
// record what they are told, a device whose writes come up short and whose
// reads fail once its data runs out, and the store the golden files
// (tests/data/files/small.txt and small.csv) were written by hand for.

#include "files/filehost.h"

#include "core/store.h"

#include <QFile>
#include <QIODevice>
#include <QStringList>

#include <algorithm>
#include <cstring>

class RecordingHost : public FileHost {
public:
    explicit RecordingHost(MeasurementStore &store) : m_store(store) {}
    void titleRefresh() override { ++titleRefreshes; }
    void display_data() override { ++displayRebuilds; }
    void oilName_set(const QString &name) override { oilNames << (m_store.oilName = name); }
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
        values << 0;
        visible = true;
    }
    void progress_setValue(int percent) override { values << percent; }
    void progress_end() override { visible = false; }
    QStringList captions;
    QList<int> values;
    bool visible = false;
};

class FailingDevice : public QIODevice {
public:
    explicit FailingDevice(qint64 writeLimit, QByteArray data = {})
        : m_writeLimit(writeLimit), m_data(std::move(data)) {}
    QByteArray written;

protected:
    qint64 writeData(const char *data, qint64 size) override {
        const qint64 n = std::min(size, m_writeLimit - qint64(written.size()));
        if (n > 0)
            written.append(data, n);
        return n > 0 ? n : -1;
    }
    qint64 readData(char *data, qint64 size) override {
        const qint64 n = std::min(size, qint64(m_data.size()) - m_readPos);
        if (n <= 0)
            return -1;
        std::memcpy(data, m_data.constData() + m_readPos, size_t(n));
        m_readPos += n;
        return n;
    }

private:
    qint64 m_writeLimit;
    QByteArray m_data;
    qint64 m_readPos = 0;
};

inline void fillSmallStore(MeasurementStore &store) {
    store.alarmThreshold = 850.0f;
    store.oilName = QStringLiteral("Turbine oil T46");
    store.calSource.count = 2;
    store.calSource.pairs[0] = {0.125f, 150.0f};
    store.calSource.pairs[1] = {0.25f, 300.0f};
    store.calTable.count = 1;
    store.calTable.pairs[0] = {1.5f, 2000.0f};
    // year, month, day, hour, minute, second, water, temperature, pressure,
    // soot, stream, adc_meas, adc_ref
    const DataPoint points[] = {
        {2024, 3, 7, 9, 5, 0, 123, 45.1f, 1013.25f, 0.35f, 2, 28790, 31245},
        {2024, 3, 7, 9, 5, 4, 1234.6f, -5.125f, 999.999f, 0, 0, 2.5f, 0.5f},
        {999, 12, 31, 23, 59, 59, 0.4f, -0.004f, 0.004f, 100, 6, 1e6f, 65535},
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
