#include "fakes.h"

#include "files/datafile.h"
#include "files/datafilescanner.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

#include <random>

namespace {

const QByteArray header =
    QByteArrayLiteral(":alarmthreshold=-1\r\n:oilname=\r\n:calsource=\r\n:caltable=\r\n\r\n"
                      "Date\tTime\tWater [ppm]\tPressure [mBar]\tTemperature [\xB0"
                      "C]\tSoot [%]\tRef ADC\tMeasure ADC\tStream\r\n\r\n");

// Loads the bytes into the store through a buffer.
FileResult loadBytes(DataFile &file, const QByteArray &bytes, MergeMode mode) {
    QByteArray data = bytes;
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    return file.dataFile_load(buffer, mode, false, QStringLiteral("test.txt"));
}

void setPoints(MeasurementStore &store, int count, int firstDay) {
    std::vector<DataPoint> points;
    for (int i = 0; i < count; ++i)
        points.push_back(point(2023, 1, firstDay + i, 0, 0, 0, float(i)));
    store.merge(points.data(), count, MergeMode::Replace);
}

} // namespace

class TestDataFile : public QObject {
    Q_OBJECT
private slots:
    void writesTheGoldenFile();
    void emptyStoreSavesTheHeaderOnly();
    void loadingAnEmptyFileEmptiesTheStore();
    void roundTripKeepsTenCalibrationPairs();
    void dataLines_data();
    void dataLines();
    void metadataLines_data();
    void metadataLines();
    void mergeModes_data();
    void mergeModes();
    void blockSplitsAndFastPathAgree();
    void tooManyRecordsInTheFile();
    void mergeBeyondCapacityChangesNothing();
    void shortWriteLeavesTheMarkSet_data();
    void shortWriteLeavesTheMarkSet();
    void unopenableFiles();
    void readErrorChangesNothing();
    void writeLinesRanges();
    void progressWindow();
};

void TestDataFile::writesTheGoldenFile() {
    MeasurementStore store;
    fillSmallStore(store);
    store.fileName_current = QStringLiteral("keep.txt");
    RecordingHost host(store);
    DataFile file(store, host);
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("out.txt"));
    QVERIFY(!file.dataFile_save(name, false).failed());
    QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")));
    QVERIFY(!store.data_changed);
    QCOMPARE(host.titleRefreshes, 1);
    QCOMPARE(store.fileName_current, QStringLiteral("keep.txt"));
}

void TestDataFile::emptyStoreSavesTheHeaderOnly() {
    MeasurementStore store;
    RecordingHost host(store);
    DataFile file(store, host);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(!file.dataFile_save(buffer, false).failed());
    QCOMPARE(buffer.data(), header);
}

void TestDataFile::loadingAnEmptyFileEmptiesTheStore() {
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    DataFile file(store, host);
    QVERIFY(!loadBytes(file, header, MergeMode::Replace).failed());
    QCOMPARE(store.dataPoint_count, 0);
    QCOMPARE(store.calSource.count, int16_t(0));
    QCOMPARE(store.calTable.count, int16_t(0));
    QCOMPARE(store.alarmThreshold, -1.0f);
    QCOMPARE(store.oilName, QString());
    QVERIFY(!store.data_changed);
    QCOMPARE(host.titleRefreshes, 1);
    QCOMPARE(host.displayRebuilds, 1);
}

void TestDataFile::roundTripKeepsTenCalibrationPairs() {
    MeasurementStore source;
    RecordingHost sourceHost(source);
    DataFile writer(source, sourceHost);
    source.oilName = QStringLiteral("  Hydraulic \xE9l  "); // Latin-1 survives, blanks are trimmed
    source.alarmThreshold = 1200.0f;
    source.calSource.count = 11;
    source.calTable.count = 11;
    for (int i = 0; i < 11; ++i) {
        source.calSource.pairs[i] = {0.03125f * float(i), float(100 * i)};
        source.calTable.pairs[i] = {-0.5f * float(i), float(-7 * i)};
    }
    const DataPoint points[] = {
        point(2024, 1, 2, 3, 4, 5, 17, 1.25f, -3.5f, 0.75f, 30000, 29000, 1),
        point(2024, 1, 2, 3, 4, 9, 0, -0.5f, 99.25f, 2, 1, 2, -3),
    };
    source.merge(points, 2, MergeMode::Replace);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(!writer.dataFile_save(buffer, false).failed());

    MeasurementStore target;
    RecordingHost host(target);
    DataFile reader(target, host);
    QVERIFY(!loadBytes(reader, buffer.data(), MergeMode::Replace).failed());
    QCOMPARE(target.dataPoint_count, 2);
    QVERIFY(samePoint(target.dataPoints[0], points[0]));
    QVERIFY(samePoint(target.dataPoints[1], points[1]));
    QCOMPARE(host.oilNames, QStringList{QStringLiteral("Hydraulic \xE9l")});
    QCOMPARE(target.alarmThreshold, 1200.0f);
    QCOMPARE(target.calSource.count, int16_t(10));
    QCOMPARE(target.calTable.count, int16_t(10));
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(target.calSource.pairs[i].first, source.calSource.pairs[i].first);
        QCOMPARE(target.calSource.pairs[i].second, source.calSource.pairs[i].second);
        QCOMPARE(target.calTable.pairs[i].first, source.calTable.pairs[i].first);
        QCOMPARE(target.calTable.pairs[i].second, source.calTable.pairs[i].second);
    }
}

void TestDataFile::dataLines_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("count");
    QTest::addColumn<float>("water"); // of the last record
    QTest::addColumn<int>("stream");

    const QByteArray tail = "\t1013.25\t45.10\t0.35\t31245\t28790\t2";
    QTest::newRow("decimal comma") << "2024-03-07\t09:05:00\t12,5" + tail + "\r\n"
                                   << 1 << 12.5f << 2;
    QTest::newRow("decimal point") << "2024-03-07\t09:05:00\t12.5" + tail + "\r\n"
                                   << 1 << 12.5f << 2;
    QTest::newRow("date, time and water only, slot reused")
        << "2024-03-07\t09:05:00\t77\r\n2024-03-07\t09:05:01\t5" + tail + "\r\n"
        << 1 << 5.0f << 2;
    QTest::newRow("comment line") << "# 2024-03-07\t09:05:00\t1" + tail + "\r\n" << 0 << 0.0f << 0;
    QTest::newRow("leading blank") << " 2024-03-07\t09:05:00\t1" + tail + "\r\n" << 0 << 0.0f << 0;
    QTest::newRow("# after the stream field") << "2024-03-07\t09:05:00\t3" + tail + "\t# note\r\n"
                                              << 1 << 3.0f << 2;
    QTest::newRow("# glued to the stream digits") << "2024-03-07\t09:05:00\t3" + tail + "# note\r\n"
                                                  << 0 << 0.0f << 0;
    QTest::newRow("# inside the stream field")
        << QByteArray("2024-03-07\t09:05:00\t3\t1\t2\t3\t4\t5\t6#\r\n") << 0 << 0.0f << 0;
    QTest::newRow("tab and text after the stream")
        << "2024-03-07\t09:05:00\t4" + tail + "\tx y z\r\n"
        << 1 << 4.0f << 2;
    QTest::newRow("letter in a number") << "2024-03-07\t09:05:00\t1e3" + tail + "\r\n"
                                        << 0 << 0.0f << 0;
    QTest::newRow("minus inside a number reads 0") << "2024-03-07\t09:05:00\t1-2" + tail + "\r\n"
                                                   << 1 << 0.0f << 2;
    QTest::newRow("long number, full parse")
        << "2024-03-07\t09:05:00\t0000000000012.5" + tail + "\r\n"
        << 1 << 12.5f << 2;
    QTest::newRow("65 characters read 0")
        << "2024-03-07\t09:05:00\t" + QByteArray(64, '0') + "1" + tail + "\r\n"
        << 1 << 0.0f << 2;
    QTest::newRow("empty fields") << QByteArray("2024-03-07\t09:05:00\t\t\t\t\t\t\t\r\n") << 1
                                  << 0.0f << 0;
    QTest::newRow("stream rounded")
        << QByteArray("2024-03-07\t09:05:00\t1\t2\t3\t4\t5\t6\t2.6\r\n") << 1 << 1.0f << 3;
    QTest::newRow("negative stream")
        << QByteArray("2024-03-07\t09:05:00\t1\t2\t3\t4\t5\t6\t-1\r\n") << 1 << 1.0f << -1;
    QTest::newRow("LF only") << "2024-03-07\t09:05:00\t8" + tail + "\n" << 1 << 8.0f << 2;
    QTest::newRow("CR only") << "2024-03-07\t09:05:00\t8" + tail + "\r" << 1 << 8.0f << 2;
    QTest::newRow("last line without an end")
        << QByteArray("2024-03-07\t09:05:00\t8") + tail << 0 << 0.0f << 0;
    QTest::newRow("stream ended by a tab, no line end")
        << QByteArray("2024-03-07\t09:05:00\t8") + tail + "\t" << 0 << 0.0f << 0;
    // Fields much longer than a read block: the text is carried across
    // blocks, a number reads 0, a year is held at its largest value.
    QTest::newRow("water field across blocks")
        << "2024-03-07\t09:05:00\t" + QByteArray(100000, '1') + tail + "\r\n"
        << 1 << 0.0f << 2;
    QTest::newRow("year across blocks, then a normal line")
        << QByteArray(100000, '9') + "-03-07\t09:05:00\t1" + tail + "\r\n" +
               "2024-03-07\t09:05:01\t6" + tail + "\r\n"
        << 2 << 6.0f << 2;
    QTest::newRow("title line") << header << 0 << 0.0f << 0;
    QTest::newRow("unknown key") << QByteArray(":foo=2024-03-07\r\n") << 0 << 0.0f << 0;
}

void TestDataFile::dataLines() {
    QFETCH(QByteArray, text);
    QFETCH(int, count);
    QFETCH(float, water);
    QFETCH(int, stream);
    MeasurementStore store;
    RecordingHost host(store);
    DataFile file(store, host);
    QVERIFY(!loadBytes(file, text, MergeMode::Replace).failed());
    QCOMPARE(store.dataPoint_count, count);
    if (count > 0) {
        const DataPoint &p = store.dataPoints[size_t(count - 1)];
        QCOMPARE(p.water, water);
        QCOMPARE(int(p.stream), stream);
    }
    if (QByteArrayView(text).startsWith("99999"))
        QCOMPARE(int(store.dataPoints[0].year), 32767);
}

void TestDataFile::metadataLines_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("oilNames");
    QTest::addColumn<float>("threshold");
    QTest::addColumn<int>("sourceCount");
    QTest::addColumn<float>("pendingFirst"); // calSource.pairs[count].first

    const QStringList none;
    QTest::newRow("no metadata") << QByteArray() << none << 33.0f << 0 << 9.0f;
    QTest::newRow("empty oil name")
        << QByteArray(":oilname=\r\n") << QStringList{QString()} << 33.0f << 0 << 9.0f;
    QTest::newRow("oil name longer than the line cap")
        << ":oilname=" + QByteArray(DataFileScanner::maxMetaLine + 5000, 'x') + "\r\n"
        << QStringList{QString(DataFileScanner::maxMetaLine - 9, QLatin1Char('x'))} << 33.0f << 0
        << 9.0f;
    QTest::newRow("oil name trimmed, # kept")
        << QByteArray(":oilname=  Gear #2 \r\n") << QStringList{QStringLiteral("Gear #2")} << 33.0f
        << 0 << 9.0f;
    QTest::newRow("keys are case-sensitive")
        << QByteArray(":OilName=x\r\n:ALARMTHRESHOLD=5\r\n") << none << 33.0f << 0 << 9.0f;
    QTest::newRow("threshold with comma")
        << QByteArray(":alarmthreshold=12,5\r\n") << none << 12.5f << 0 << 9.0f;
    QTest::newRow("threshold without value")
        << QByteArray(":alarmthreshold=\r\n") << none << 33.0f << 0 << 9.0f;
    QTest::newRow("empty pieces skipped, odd piece left pending")
        << QByteArray(":calsource=\t0.1\t\t5\t0,2\r\n") << none << 33.0f << 1 << 0.2f;
    QTest::newRow("a second line adds pairs")
        << QByteArray(":calsource=1\t2\t3\t4\r\n:calsource=5\t6\r\n") << none << 33.0f << 3 << 9.0f;
}

void TestDataFile::metadataLines() {
    QFETCH(QByteArray, text);
    QFETCH(QStringList, oilNames);
    QFETCH(float, threshold);
    QFETCH(int, sourceCount);
    QFETCH(float, pendingFirst);
    MeasurementStore store;
    store.alarmThreshold = 33.0f;
    store.calSource.count = 3;
    for (CalPair &p : store.calSource.pairs)
        p = {9.0f, 9.0f};
    RecordingHost host(store);
    DataFile file(store, host);
    QVERIFY(!loadBytes(file, text, MergeMode::Replace).failed());
    QCOMPARE(host.oilNames, oilNames);
    QCOMPARE(store.alarmThreshold, threshold);
    QCOMPARE(int(store.calSource.count), sourceCount);
    QCOMPARE(store.calSource.pairs[sourceCount].first, pendingFirst);
}

void TestDataFile::mergeModes_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("days"); // the store's days after the merge
    QTest::addColumn<bool>("changedBefore");
    QTest::newRow("replace") << 1 << QList<int>{20, 21, 22} << true;
    QTest::newRow("insert before") << 2 << QList<int>{20, 21, 22, 1, 2, 3, 4, 5} << true;
    QTest::newRow("append") << 3 << QList<int>{1, 2, 3, 4, 5, 20, 21, 22} << false;
}

void TestDataFile::mergeModes() {
    QFETCH(int, mode);
    QFETCH(QList<int>, days);
    QFETCH(bool, changedBefore);
    MeasurementStore fileStore;
    RecordingHost fileHost(fileStore);
    DataFile writer(fileStore, fileHost);
    setPoints(fileStore, 3, 20);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(!writer.dataFile_save(buffer, false).failed());

    MeasurementStore store;
    setPoints(store, 5, 1);
    store.data_changed = changedBefore;
    RecordingHost host(store);
    DataFile reader(store, host);
    QVERIFY(!loadBytes(reader, buffer.data(), MergeMode(mode)).failed());
    QCOMPARE(store.dataPoint_count, int(days.size()));
    for (int i = 0; i < days.size(); ++i)
        QCOMPARE(int(store.dataPoints[size_t(i)].day), days[i]);
    QVERIFY(!store.data_changed);
    // The duplicate index follows the merge.
    QVERIFY(store.isDuplicate(point(2023, 1, 21, 5, 0, 0)));
}

// Lines of many shapes, valid and not, scanned once as a whole and once a
// byte at a time: the byte-wise run never sees a whole line in its block,
// so it exercises the general machine and every block split.
void TestDataFile::blockSplitsAndFastPathAgree() {
    std::mt19937 rng(7);
    auto pick = [&](std::initializer_list<const char *> items) {
        return QByteArray(items.begin()[rng() % items.size()]);
    };
    QByteArray text;
    for (int i = 0; i < 4000; ++i) {
        // Every other line has the writer's shape (the whole-line fast path).
        const bool clean = i % 2 == 0;
        QByteArray line;
        if (clean) {
            line = pick({"2024-03-07\t", "0999-12-31\t", "2023-01-01\t"}) +
                   pick({"09:05:00\t", "23:59:59\t"});
        } else {
            line = pick({"2024", "999", "02024", "", "x"}) + pick({"-", "-", ":"}) +
                   pick({"03", "3", "12"}) + "-" + pick({"07", "7"}) + "\t" +
                   pick({"09", "9", "25"}) + ":05:" + pick({"00", "59", "5"}) + "\t";
        }
        for (int f = 0; f < 7; ++f) {
            if (clean) {
                line += pick({"123", "-5.13", "1013,25", "0.35", "7", "0.000001", "-0"});
                if (f < 6)
                    line += "\t";
                continue;
            }
            line += pick({"123", "-5.13", "1013,25", "0.35", "", "-", "1-2", "12345678", "0.000001",
                          "1.2.3", "#", "7"});
            if (f < 6 || rng() % 4 == 0)
                line += pick({"\t", "\t", "\t", " "});
        }
        text += line +
                (clean ? pick({"\r\n", "\n"}) : pick({"\r\n", "\n", "\r", "# c\r\n", "\t\r\n"})) +
                pick({"", "", ":oilname=a\r\n", "\r\n", "#\r\n"});
    }
    std::vector<DataPoint> whole(6000), bytewise(6000);
    DataFileScanner a(whole.data(), 6000), b(bytewise.data(), 6000);
    const CalTable empty;
    a.reset(empty, empty);
    b.reset(empty, empty);
    QVERIFY(a.scan(text.constData(), text.size()));
    for (qsizetype i = 0; i < text.size(); ++i)
        QVERIFY(b.scan(text.constData() + i, 1));
    QVERIFY(a.count() > 2000);
    QCOMPARE(a.count(), b.count());
    for (int i = 0; i < a.count(); ++i) {
        if (!samePoint(whole[size_t(i)], bytewise[size_t(i)]))
            QFAIL(qPrintable(QStringLiteral("record %1 differs").arg(i)));
    }
}

void TestDataFile::tooManyRecordsInTheFile() {
    QByteArray text = header;
    text.reserve(text.size() + 35 * (MeasurementStore::capacity + 1));
    for (int i = 0; i <= MeasurementStore::capacity; ++i)
        text += "2024-01-01\t00:00:00\t1\t2\t3\t4\t5\t6\t1\r\n";
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    DataFile file(store, host);
    const FileResult r =
        loadBytes(file, ":oilname=new\r\n:caltable=\r\n" + text, MergeMode::Replace);
    QCOMPARE(r.code, FileResult::Code::TooManyRecords);
    QVERIFY(r.message.contains(QStringLiteral("test.txt")));
    QVERIFY(r.message.contains(QStringLiteral("130000")));
    MeasurementStore expected;
    fillSmallStore(expected);
    QCOMPARE(store.dataPoint_count, 3);
    for (int i = 0; i < 3; ++i)
        QVERIFY(samePoint(store.dataPoints[size_t(i)], expected.dataPoints[size_t(i)]));
    QCOMPARE(store.oilName, expected.oilName);
    QCOMPARE(store.calTable.count, expected.calTable.count);
    QVERIFY(store.data_changed);
    QCOMPARE(host.oilNames, QStringList());
    QCOMPARE(host.titleRefreshes + host.displayRebuilds, 0);

    // Exactly the capacity fits.
    text.chop(int(sizeof "2024-01-01\t00:00:00\t1\t2\t3\t4\t5\t6\t1\r\n") - 1);
    QVERIFY(!loadBytes(file, text, MergeMode::Replace).failed());
    QCOMPARE(store.dataPoint_count, MeasurementStore::capacity);
}

void TestDataFile::mergeBeyondCapacityChangesNothing() {
    const QByteArray two = ":alarmthreshold=5\r\n:calsource=\r\n" + header +
                           "2024-01-01\t00:00:00\t1\t2\t3\t4\t5\t6\t1\r\n"
                           "2024-01-01\t00:00:01\t1\t2\t3\t4\t5\t6\t1\r\n";
    for (const MergeMode mode : {MergeMode::InsertBefore, MergeMode::Append}) {
        MeasurementStore store;
        setPoints(store, 5, 1);
        store.dataPoint_count = MeasurementStore::capacity - 1;
        store.reindex();
        store.alarmThreshold = 40.0f;
        store.calSource.count = 2;
        store.data_changed = true;
        RecordingHost host(store);
        DataFile file(store, host);
        const FileResult r = loadBytes(file, two, mode);
        QCOMPARE(r.code, FileResult::Code::TooManyRecords);
        QVERIFY(r.message.contains(QStringLiteral("130000")));
        QCOMPARE(store.dataPoint_count, MeasurementStore::capacity - 1);
        QCOMPARE(int(store.dataPoints[0].day), 1);
        QCOMPARE(store.alarmThreshold, 40.0f);
        QCOMPARE(store.calSource.count, int16_t(2));
        QVERIFY(store.data_changed);
        // Replacing is always possible.
        QVERIFY(!loadBytes(file, two, MergeMode::Replace).failed());
        QCOMPARE(store.dataPoint_count, 2);
    }
}

void TestDataFile::shortWriteLeavesTheMarkSet_data() {
    QTest::addColumn<int>("limit");
    QByteArray small = fileBytes(testData("small.txt"));
    QTest::newRow("nothing") << 0;
    QTest::newRow("in the threshold line") << 5;
    QTest::newRow("in the calibration lines") << int(small.indexOf(":caltable") + 2);
    QTest::newRow("in the title") << int(small.indexOf("Soot"));
    QTest::newRow("in the data lines") << int(small.size() - 3);
}

void TestDataFile::shortWriteLeavesTheMarkSet() {
    QFETCH(int, limit);
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    DataFile file(store, host);
    FailingDevice device(limit);
    device.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    const FileResult r = file.dataFile_save(device, false, QStringLiteral("full.txt"));
    QCOMPARE(r.code, FileResult::Code::WriteFailed);
    QVERIFY(store.data_changed);
    QCOMPARE(host.titleRefreshes, 0);
    // What made it to the device is the start of the file.
    QVERIFY(fileBytes(testData("small.txt")).startsWith(device.written));
}

void TestDataFile::unopenableFiles() {
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    DataFile file(store, host);
    QTemporaryDir dir;
    const QString missing = dir.filePath(QStringLiteral("no/such/folder/x.txt"));
    QCOMPARE(file.dataFile_save(missing, false).code, FileResult::Code::OpenFailed);
    QVERIFY(store.data_changed);
    const FileResult r = file.dataFile_load(missing, MergeMode::Replace, false);
    QCOMPARE(r.code, FileResult::Code::OpenFailed);
    QVERIFY(r.message.contains(missing));
    QCOMPARE(store.dataPoint_count, 3);
    QCOMPARE(store.calSource.count, int16_t(2));
    QCOMPARE(host.titleRefreshes + host.displayRebuilds, 0);
}

void TestDataFile::readErrorChangesNothing() {
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    DataFile file(store, host);
    QByteArray text = header;
    for (int i = 0; i < 2000; ++i)
        text += "2024-01-01\t00:00:00\t1\t2\t3\t4\t5\t6\t1\r\n";
    FailingDevice device(0, text, DataFile::blockSize + 100);
    device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    QCOMPARE(file.dataFile_load(device, MergeMode::Replace, false).code,
             FileResult::Code::ReadFailed);
    QCOMPARE(store.dataPoint_count, 3);
    QCOMPARE(store.calSource.count, int16_t(2));
}

void TestDataFile::writeLinesRanges() {
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    DataFile file(store, host);
    QVERIFY(file.dataFile_writeLines(nullptr, 0, 3));
    QBuffer readOnly;
    readOnly.open(QIODevice::ReadOnly);
    QVERIFY(file.dataFile_writeLines(&readOnly, 0, 3));

    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(!file.dataFile_writeLines(&buffer, 2, 2));
    QVERIFY(!file.dataFile_writeLines(&buffer, 3, 1));
    QCOMPARE(buffer.size(), 0);
    QVERIFY(file.dataFile_writeLines(&buffer, -1, 2));
    QVERIFY(file.dataFile_writeLines(&buffer, 0, MeasurementStore::capacity + 1));
    QCOMPARE(buffer.size(), 0);
    QVERIFY(!file.dataFile_writeLines(&buffer, 1, 2));
    QCOMPARE(buffer.data(),
             QByteArray("2024-03-07\t09:05:04\t1235\t1000.00\t-5.13\t0.00\t1\t3\t0\r\n"));
}

void TestDataFile::progressWindow() {
    MeasurementStore store;
    setPoints(store, 5, 1);
    store.dataPoint_count = 5000;
    RecordingHost host(store);
    RecordingProgress progress;
    DataFile file(store, host, &progress);
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("p.txt"));
    QVERIFY(!file.dataFile_save(name, false).failed());
    QCOMPARE(progress.captions, QStringList());

    QVERIFY(!file.dataFile_save(name, true).failed());
    QCOMPARE(progress.captions, QStringList{QStringLiteral("Saving file...")});
    QVERIFY(!progress.visible);
    QVERIFY(std::is_sorted(progress.values.begin(), progress.values.end()));
    QCOMPARE(progress.values.last(), 100);

    progress.values.clear();
    QVERIFY(!file.dataFile_load(name, MergeMode::Replace, true).failed());
    QCOMPARE(progress.captions.last(), QStringLiteral("Loading file..."));
    QCOMPARE(progress.values.first(), 0);
    QCOMPARE(progress.values.last(), 100);
    QVERIFY(!progress.visible);
    QCOMPARE(progress.ends, 2);
}

QTEST_GUILESS_MAIN(TestDataFile)
#include "test_datafile.moc"
