#include "fakes.h"

#include "files/datafile.h"
#include "files/datafilescanner.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

#include <tuple>

namespace {

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
    RecordingHost host{store};
    RecordingProgress progress;
    DataFile file{store, host, &progress};

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
    void goldenBytes();
    void dataLines_data();
    void dataLines();
    void metadataLines_data();
    void metadataLines();
    void overCapacityChangesNothing();
    void writeAndReadFailuresChangeNothing();
};

void TestDataFile::goldenBytes() {
    Rig rig;
    fillSmallStore(rig.store);
    rig.store.fileName_current = QStringLiteral("keep.txt");
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("out.txt"));
    QVERIFY(!rig.file.dataFile_save(name, true).failed());
    QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")));
    QVERIFY(!rig.store.data_changed);
    QCOMPARE(rig.host.titleRefreshes, 1);
    QCOMPARE(rig.store.fileName_current, QStringLiteral("keep.txt"));

    Rig reread; // read back and written again, the file keeps its bytes
    QVERIFY(!reread.file.dataFile_load(name, MergeMode::Replace, true).failed());
    QCOMPARE(reread.save(), fileBytes(name));
    QCOMPARE(rig.progress.captions + reread.progress.captions,
             (QStringList{QStringLiteral("Saving file..."), QStringLiteral("Loading file...")}));

    // A file without records empties the store, metadata included.
    rig.store.data_changed = true;
    QVERIFY(!rig.load(header).failed());
    QVERIFY(!rig.store.data_changed);
    QCOMPARE(rig.host.displayRebuilds, 1);
    QCOMPARE(rig.save(), header);
}

void TestDataFile::dataLines_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("count");
    QTest::addColumn<float>("water"); // of the last record
    QTest::addColumn<int>("stream");

    const QByteArray d = "2024-03-07\t09:05:00\t";
    const QByteArray t = "\t1013.25\t45.10\t0.35\t31245\t28790\t2";
    QTest::newRow("decimal comma") << d + "12,5" + t + "\r\n" << 1 << 12.5f << 2;
    QTest::newRow("3 fields, slot reused") << d + "77\r\n" + d + "5" + t + "\r\n" << 1 << 5.0f << 2;
    QTest::newRow("comment line") << "# " + d + "1" + t + "\r\n" << 0 << 0.0f << 0;
    QTest::newRow("leading blank") << " " + d + "1" + t + "\r\n" << 0 << 0.0f << 0;
    QTest::newRow("# after the stream") << d + "3" + t + "\t# x\r\n" << 1 << 3.0f << 2;
    QTest::newRow("# glued to the stream") << d + "3" + t + "# x\r\n" << 0 << 0.0f << 0;
    QTest::newRow("# in the stream") << d + "3\t1\t2\t3\t4\t5\t6#\r\n" << 0 << 0.0f << 0;
    QTest::newRow("letter in a number") << d + "1e3" + t + "\r\n" << 0 << 0.0f << 0;
    QTest::newRow("minus inside a number") << d + "1-2" + t + "\r\n" << 1 << 0.0f << 2;
    QTest::newRow("64 chars") << d + QByteArray(60, '0') + "12.5" + t + "\r\n" << 1 << 12.5f << 2;
    QTest::newRow("65 read 0") << d + QByteArray(64, '0') + "1" + t + "\r\n" << 1 << 0.0f << 2;
    QTest::newRow("empty fields") << d + "\t\t\t\t\t\t\r\n" << 1 << 0.0f << 0;
    QTest::newRow("stream rounded") << d + "1\t2\t3\t4\t5\t6\t2.6\r\n" << 1 << 1.0f << 3;
    QTest::newRow("LF, CR") << d + "7" + t + "\n" + d + "8" + t + "\r" << 2 << 8.0f << 2;
    QTest::newRow("last line without an end") << d + "8" + t << 0 << 0.0f << 0;
    QTest::newRow("tab, no line end") << d + "8" + t + "\t" << 0 << 0.0f << 0;
    // Fields longer than a read block: a number reads 0, a year is held at
    // its largest value.
    QTest::newRow("long water") << d + QByteArray(100000, '1') + t + "\r\n" << 1 << 0.0f << 2;
    QTest::newRow("long year, then a normal line")
        << QByteArray(100000, '9') + "-03-07\t09:05:00\t1" + t + "\r\n" + d + "6" + t + "\r\n"
        << 2 << 6.0f << 2;
    QTest::newRow("title line") << header << 0 << 0.0f << 0;
    QTest::newRow("unknown key") << QByteArray(":foo=2024-03-07\r\n") << 0 << 0.0f << 0;
}

void TestDataFile::dataLines() {
    QFETCH(QByteArray, text);
    QFETCH(int, count);
    QFETCH(float, water);
    QFETCH(int, stream);
    Rig rig;
    QVERIFY(!rig.load(text).failed());
    QCOMPARE(rig.store.dataPoint_count, count);
    if (count > 0) {
        QCOMPARE(rig.store.dataPoints[size_t(count - 1)].water, water);
        QCOMPARE(int(rig.store.dataPoints[size_t(count - 1)].stream), stream);
    }
    if (text.startsWith("99999"))
        QCOMPARE(int(rig.store.dataPoints[0].year), 32767);

    // Fed a byte at a time the reader never sees a whole line: every block
    // split must read as the whole-line path does.
    std::vector<DataPoint> split(4);
    DataFileScanner scanner(split.data(), 4);
    scanner.reset(CalTable(), CalTable());
    for (qsizetype i = 0; i < text.size(); ++i)
        scanner.scan(text.constData() + i, 1);
    QCOMPARE(scanner.count(), count);
    const auto fields = [](const DataPoint &p) {
        return std::tuple(p.year, p.month, p.day, p.hour, p.minute, p.second, p.water,
                          p.temperature, p.pressure, p.soot, p.stream, p.adc_meas, p.adc_ref);
    };
    for (int i = 0; i < count; ++i)
        QVERIFY(fields(split[size_t(i)]) == fields(rig.store.dataPoints[size_t(i)]));
}

void TestDataFile::metadataLines_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("oilNames");
    QTest::addColumn<float>("threshold");
    QTest::addColumn<int>("pairs");

    const QStringList none;
    const int cap = DataFileScanner::maxMetaLine;
    QTest::newRow("empty oil name")
        << QByteArray(":oilname=\r\n") << QStringList{QString()} << 33.0f << 0;
    QTest::newRow("over the line cap")
        << ":oilname=" + QByteArray(cap + 5000, 'x') + "\r\n"
        << QStringList{QString(cap - 9, QLatin1Char('x'))} << 33.0f << 0;
    QTest::newRow("Latin-1, trimmed, # kept")
        << QByteArray(":oilname=  Gear #2 \xE9l \r\n")
        << QStringList{QStringLiteral("Gear #2 \xE9l")} << 33.0f << 0;
    QTest::newRow("case-sensitive keys")
        << QByteArray(":OilName=x\r\n:ALARMTHRESHOLD=5\r\n") << none << 33.0f << 0;
    QTest::newRow("comma") << QByteArray(":alarmthreshold=12,5\r\n") << none << 12.5f << 0;
    QTest::newRow("no value") << QByteArray(":alarmthreshold=\r\n") << none << 33.0f << 0;
    QTest::newRow("empties skipped, odd one out")
        << QByteArray(":calsource=\t0.1\t\t5\t0,2\r\n") << none << 33.0f << 1;
    QTest::newRow("second line adds")
        << QByteArray(":calsource=1\t2\t3\t4\r\n:calsource=5\t6\r\n") << none << 33.0f << 3;
    QTest::newRow("ten pairs kept") << ":calsource=" + QByteArray("1\t2\t").repeated(12) + "\r\n"
                                    << none << 33.0f << 10;
}

void TestDataFile::metadataLines() {
    QFETCH(QByteArray, text);
    QFETCH(QStringList, oilNames);
    QFETCH(float, threshold);
    QFETCH(int, pairs);
    Rig rig;
    rig.store.alarmThreshold = 33.0f;
    rig.store.calSource.count = 3;
    QVERIFY(!rig.load(text).failed());
    QCOMPARE(rig.host.oilNames, oilNames);
    QCOMPARE(rig.store.alarmThreshold, threshold);
    QCOMPARE(int(rig.store.calSource.count), pairs);
}

// One record too many fails and leaves records, metadata and the mark as they
// were; exactly the capacity fits.
void TestDataFile::overCapacityChangesNothing() {
    for (const MergeMode mode : {MergeMode::Replace, MergeMode::InsertBefore, MergeMode::Append}) {
        const int held = mode == MergeMode::Replace ? 3 : MeasurementStore::capacity - 1;
        const int room = MeasurementStore::capacity - (mode == MergeMode::Replace ? 0 : held);
        Rig rig;
        QVERIFY(!rig.load(":alarmthreshold=40\r\n:calsource=1\t2\r\n" + records(held)).failed());
        rig.store.data_changed = true;
        const int calls = rig.host.titleRefreshes + rig.host.displayRebuilds;
        const QByteArray meta = ":alarmthreshold=5\r\n:oilname=new\r\n:calsource=\r\n" + header;
        const FileResult r = rig.load(meta + records(room + 1, 30), mode);
        QCOMPARE(r.code, FileResult::Code::TooManyRecords);
        QVERIFY(r.message.contains(QStringLiteral("test.txt")));
        QVERIFY(r.message.contains(QStringLiteral("130000")));
        QCOMPARE(rig.store.dataPoint_count, held);
        QCOMPARE(int(rig.store.dataPoints[0].day), 1);
        QCOMPARE(rig.store.alarmThreshold, 40.0f);
        QCOMPARE(int(rig.store.calSource.count), 1);
        QVERIFY(rig.host.oilNames.isEmpty());
        QVERIFY(rig.store.data_changed);
        QCOMPARE(rig.host.titleRefreshes + rig.host.displayRebuilds, calls);

        QVERIFY(!rig.load(meta + records(room, 30), mode).failed());
        QCOMPARE(rig.store.dataPoint_count, MeasurementStore::capacity);
    }
}

// Short writes anywhere in the file, files that cannot be opened and a read
// error in the second block: the store, its mark included, stays as it was.
void TestDataFile::writeAndReadFailuresChangeNothing() {
    Rig rig;
    fillSmallStore(rig.store);
    const QByteArray golden = fileBytes(testData("small.txt"));
    for (const char *at : {"", ":caltable", "Soot", "0999-12-31"}) {
        FailingDevice device(golden.indexOf(at) + 2);
        device.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        QCOMPARE(rig.file.dataFile_save(device, false).code, FileResult::Code::WriteFailed);
        QVERIFY(golden.startsWith(device.written));
    }
    QTemporaryDir dir;
    const QString missing = dir.filePath(QStringLiteral("no/such/folder/x.txt"));
    QCOMPARE(rig.file.dataFile_save(missing, false).code, FileResult::Code::OpenFailed);
    const FileResult r = rig.file.dataFile_load(missing, MergeMode::Replace, false);
    QCOMPARE(r.code, FileResult::Code::OpenFailed);
    QVERIFY(r.message.contains(missing));
    FailingDevice device(0, (header + records(2000)).left(DataFile::blockSize + 100));
    device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    QCOMPARE(rig.file.dataFile_load(device, MergeMode::Replace, false).code,
             FileResult::Code::ReadFailed);
    QVERIFY(rig.store.data_changed);
    QCOMPARE(rig.host.titleRefreshes + rig.host.displayRebuilds, 0);
    QCOMPARE(rig.save(), golden);
}

QTEST_GUILESS_MAIN(TestDataFile)
#include "test_datafile.moc"
