// The native data file's writer and reader: golden bytes, the reader's rules,
// and failures that leave the store as it was.
#include "golden.h"

#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/datafilescanner.h"
#include "support/recordingprogress.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstring>
#include <tuple>

namespace {

// A device, open for reading when given data and else for writing, whose
// writes come up short and whose reads fail once its data runs out.
class FailingDevice : public QIODevice {
public:
    explicit FailingDevice(qint64 writeLimit, QByteArray data = {})
        : m_writeLimit(writeLimit), m_data(std::move(data)) {
        open((m_data.isEmpty() ? WriteOnly : ReadOnly) | Unbuffered);
    }
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

const QByteArray header =
    QByteArrayLiteral(":alarmthreshold=-1\r\n:oilname=\r\n:calsource=\r\n:caltable=\r\n\r\n"
                      "Date\tTime\tWater [ppm]\tPressure [mBar]\tTemperature [\xB0"
                      "C]\tSoot [%]\tRef ADC\tMeasure ADC\tStream\r\n\r\n");

// `count` data lines, day by day from `firstDay` (the reader checks no dates).
QByteArray records(int count, int firstDay = 1) {
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += "2023-01-" + QByteArray::number(firstDay + i % 50) +
                "\t00:00:00\t1\t2\t3\t4\t5\t6\t1\r\n";
    return text;
}

struct Rig {
    MeasurementStore store;
    RecordingProgress progress;
    DataFile file{store, &progress};
    CsvExport csv{store, &progress};

    FileResult load(QByteArray bytes, MergeMode mode = MergeMode::Replace) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        return file.dataFile_load(buffer, mode, false, QStringLiteral("test.txt"));
    }
    QByteArray save() {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        return file.dataFile_save(buffer, false).failed() ? QByteArray("failed") : buffer.data();
    }
};

} // namespace

class TestDataFile : public QObject {
    Q_OBJECT
private slots:

    void goldenBytes() {
        Rig rig;
        fillSmallStore(rig.store);
        rig.store.fileName_current = QStringLiteral("keep.txt");
        QTemporaryDir dir;
        const QString name = dir.filePath(QStringLiteral("out.txt"));
        QVERIFY(!rig.file.dataFile_save(name, true).failed());
        QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")));
        QVERIFY(!rig.store.data_changed);
        QCOMPARE(rig.store.fileName_current, QStringLiteral("keep.txt"));
        const QString csv = dir.filePath(QStringLiteral("out.csv"));
        QVERIFY(!rig.csv.csvFile_export(csv, false).failed());
        QCOMPARE(fileBytes(csv), fileBytes(testData("small.csv")));

        Rig reread; // read back and written again, the file keeps its bytes
        QVERIFY(!reread.file.dataFile_load(name, MergeMode::Replace, true).failed());
        QCOMPARE(reread.save(), fileBytes(name));
        QCOMPARE(rig.progress.captions + reread.progress.captions,
                 QStringLiteral("Saving file...|end|Loading file...|end").split(u'|'));

        // A file without records empties the store, metadata included.
        rig.store.data_changed = true;
        QVERIFY(!rig.load(header).failed());
        QVERIFY(!rig.store.data_changed);
        QCOMPARE(rig.save(), header);
    }

    // Data rows give the records read, the water value and the stream of the
    // last; metadata rows the calibration pairs read and the oil name if any.
    void lines_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<float>("water");
        QTest::addColumn<int>("stream");
        QTest::addColumn<int>("pairs");
        QTest::addColumn<QStringList>("oilNames");
        const auto row = [](const char *name, const QByteArray &text, int count = 0,
                            float water = 0.0f, int stream = 2) {
            QTest::newRow(name) << text << count << water << stream << 0 << QStringList();
        };
        const auto meta = [](const char *name, const QByteArray &text, int pairs,
                             const QStringList &oilNames = {}) {
            QTest::newRow(name) << text << 0 << 0.0f << 0 << pairs << oilNames;
        };
        const QByteArray d = "2024-03-07\t09:05:00\t";
        const QByteArray t = "\t1013.25\t45.10\t0.35\t31245\t28790\t2";
        row("decimal comma", d + "12,5" + t + "\r\n", 1, 12.5f);
        row("three fields only, slot reused", d + "77\r\n" + d + "5" + t + "\r\n", 1, 5.0f);
        row("comment line", "# " + d + "1" + t + "\r\n");
        row("leading blank", " " + d + "1" + t + "\r\n");
        row("# after the stream", d + "3" + t + "\t# x\r\n", 1, 3.0f);
        row("# glued to the stream", d + "3" + t + "# x\r\n");
        row("# in the stream", d + "3\t1\t2\t3\t4\t5\t6#\r\n");
        row("letter in a number", d + "1e3" + t + "\r\n");
        row("minus inside a number", d + "1-2" + t + "\r\n", 1);
        row("64-char number", d + QByteArray(60, '0') + "12.5" + t + "\r\n", 1, 12.5f);
        row("65-char number reads 0", d + "0.5" + QByteArray(62, '0') + t + "\r\n", 1);
        row("empty fields", d + "\t\t\t\t\t\t\r\n", 1, 0.0f, 0);
        row("stream rounded", d + "1\t2\t3\t4\t5\t6\t2.6\r\n", 1, 1.0f, 3);
        row("LF, CR", d + "7" + t + "\n" + d + "8" + t + "\r", 2, 8.0f);
        row("last line without an end", d + "8" + t);
        row("tab, no line end", d + "8" + t + "\t");
        // Fields longer than a read block: a number reads 0, a year is held at
        // its largest value.
        row("long water", d + QByteArray(100000, '1') + t + "\r\n", 1);
        row("long year, then a normal line",
            QByteArray(100000, '9') + "-03-07\t09:05:00\t1" + t + "\r\n" + d + "6" + t + "\r\n", 2,
            6.0f);
        row("unknown key", ":foo=2024-03-07\r\n");
        const int cap = DataFileScanner::maxMetaLine;
        meta("empty oil name", ":oilname=\r\n", 0, {QString()});
        meta("over the line cap", ":oilname=" + QByteArray(cap + 5000, 'x') + "\r\n", 0,
             {QString(cap - 9, QLatin1Char('x'))});
        meta("Latin-1, trimmed, # kept", ":oilname=  Gear #2 \xE9l \r\n", 0,
             {QStringLiteral("Gear #2 \xE9l")});
        meta("no value", ":alarmthreshold=\r\n", 0);
        meta("empties skipped, odd one out", ":calsource=\t0.1\t\t5\t0,2\r\n", 1);
        meta("second line adds", ":calsource=1\t2\t3\t4\r\n:calsource=5\t6\r\n", 3);
        meta("ten pairs kept", ":calsource=" + QByteArray("1\t2\t").repeated(12) + "\r\n", 10);
    }

    void lines() {
        QFETCH(QByteArray, text);
        QFETCH(int, count);
        Rig rig;
        rig.store.alarmThreshold = 33.0f;
        rig.store.calSource.count = 3;
        const FileResult r = rig.load(text);
        QVERIFY(!r.failed());
        QCOMPARE(rig.store.dataPoint_count, count);
        if (count > 0) {
            QTEST(rig.store.dataPoints[size_t(count - 1)].water, "water");
            QTEST(int(rig.store.dataPoints[size_t(count - 1)].stream), "stream");
        }
        if (text.startsWith("99999"))
            QCOMPARE(int(rig.store.dataPoints[0].year), 32767);
        QTEST(r.oilName ? QStringList{*r.oilName} : QStringList(), "oilNames");
        if (r.oilName)
            QCOMPARE(rig.store.oilName, *r.oilName);
        QCOMPARE(rig.store.alarmThreshold, 33.0f); // kept without a line with a value
        QTEST(int(rig.store.calSource.count), "pairs");
        // Block splits against the whole-line path: fuzz_files_datafile.
    }

    // One record too many fails and leaves records, metadata and the mark as they
    // were; exactly the capacity fits.
    void overCapacityChangesNothing() {
        for (const MergeMode mode :
             {MergeMode::Replace, MergeMode::InsertBefore, MergeMode::Append}) {
            const int held = mode == MergeMode::Replace ? 3 : 130000 - 1;
            const int room = 130000 - (mode == MergeMode::Replace ? 0 : held);
            Rig rig;
            QVERIFY(
                !rig.load(":alarmthreshold=40\r\n:calsource=1\t2\r\n" + records(held)).failed());
            rig.store.data_changed = true;
            const auto state = [&rig] {
                const MeasurementStore &m = rig.store;
                return std::tuple(m.dataPoint_count, m.dataPoints[0].day, m.alarmThreshold,
                                  m.calSource.count, m.oilName, m.data_changed);
            };
            const auto before = state();
            const QByteArray meta = ":alarmthreshold=5\r\n:oilname=new\r\n:calsource=\r\n" + header;
            const FileResult r = rig.load(meta + records(room + 1, 30), mode);
            QCOMPARE(r.code, FileResult::Code::TooManyRecords);
            QVERIFY(r.message.contains(QStringLiteral("test.txt")));
            QVERIFY(r.message.contains(QStringLiteral("130000")));
            QVERIFY(state() == before);
            QVERIFY(!rig.load(meta + records(room, 30), mode).failed());
            QCOMPARE(rig.store.dataPoint_count, 130000);
        }
    }

    // Short writes anywhere in either file, files that cannot be opened and a
    // read error in the second block: the store, its mark included, stays as it
    // was, and the export is free for the next call.
    void failuresChangeNothing() {
        Rig rig;
        fillSmallStore(rig.store);
        const QByteArray txt = fileBytes(testData("small.txt"));
        const QByteArray csv = fileBytes(testData("small.csv"));
        for (const char *at : {"", "Turbine", "caltable", "Soot", "0999-12-31"}) {
            FailingDevice a(txt.indexOf(at) + 2), b(csv.indexOf(at) + 2);
            QCOMPARE(rig.file.dataFile_save(a, false).code, FileResult::Code::WriteFailed);
            QCOMPARE(rig.csv.csvFile_export(b, false).code, FileResult::Code::WriteFailed);
            QVERIFY(txt.startsWith(a.written));
            QVERIFY(csv.startsWith(b.written));
        }
        QVERIFY(!rig.csv.isBusy());
        QTemporaryDir dir;
        const QString missing = dir.filePath(QStringLiteral("no/such/folder/x.txt"));
        QCOMPARE(rig.file.dataFile_save(missing, false).code, FileResult::Code::OpenFailed);
        const FileResult r = rig.file.dataFile_load(missing, MergeMode::Replace, false);
        QCOMPARE(r.code, FileResult::Code::OpenFailed);
        QVERIFY(r.message.contains(missing));
        FailingDevice device(0, (header + records(2000)).left(DataFile::blockSize + 100));
        QCOMPARE(rig.file.dataFile_load(device, MergeMode::Replace, false).code,
                 FileResult::Code::ReadFailed);
        QVERIFY(rig.store.data_changed);
        QCOMPARE(rig.save(), txt);
    }
};

QTEST_GUILESS_MAIN(TestDataFile)
#include "test_datafile.moc"
