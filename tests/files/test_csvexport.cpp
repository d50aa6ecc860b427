#include "fakes.h"

#include "files/csvexport.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

// A progress window that starts a second export while the first one runs,
// as a click handled during a progress update could.
class ReenteringProgress : public RecordingProgress {
public:
    CsvExport *csv = nullptr;
    QString name;
    FileResult inner;
    bool tried = false;
    void progress_setValue(int percent) override {
        RecordingProgress::progress_setValue(percent);
        if (csv && !tried && percent > 0) {
            tried = true;
            inner = csv->csvFile_export(name, true);
        }
    }
};

class TestCsvExport : public QObject {
    Q_OBJECT
private slots:
    void writesTheGoldenFile();
    void emptyStore();
    void shortWriteKeepsTheMark_data();
    void shortWriteKeepsTheMark();
    void busyGuardReturnsTheLastResult();
    void writeLinesWithAnotherSeparator();
};

void TestCsvExport::writesTheGoldenFile() {
    MeasurementStore store;
    fillSmallStore(store);
    store.fileName_current = QStringLiteral("run1.txt");
    RecordingHost host(store);
    RecordingProgress progress;
    CsvExport csv(store, host, &progress);
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("out.csv"));
    QVERIFY(!csv.csvFile_export(name, true).failed());
    QCOMPARE(fileBytes(name), fileBytes(testData("small.csv")));
    // An export counts as saving, without taking the file name.
    QVERIFY(!store.data_changed);
    QCOMPARE(host.titleRefreshes, 1);
    QCOMPARE(store.fileName_current, QStringLiteral("run1.txt"));
    QCOMPARE(progress.captions, QStringList{QStringLiteral("Saving file...")});
    QCOMPARE(progress.values.last(), 0); // the bar goes back to 0 before hiding
    QVERIFY(!progress.visible);
}

void TestCsvExport::emptyStore() {
    MeasurementStore store;
    RecordingHost host(store);
    CsvExport csv(store, host);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(!csv.csvFile_export(buffer, false).failed());
    QCOMPARE(buffer.data(),
             QByteArray("\"alarmthreshold\";\"-1\"\r\n\"oilname\";\"\"\r\n"
                        "\"calsource\";\"\";\"Water [ppm]\"\r\n\r\n"
                        "\"caltable\";\"\";\"Water [ppm]\"\r\n\r\n"
                        "\"Date\";\"Time\";\"Temperature [\xB0"
                        "C]\";\"Water [ppm]\";\"Pressure [mBar]\";\"Soot [%]\";\"Ref ADC\";"
                        "\"Measure ADC\"\r\n\r\n"));
}

void TestCsvExport::shortWriteKeepsTheMark_data() {
    QTest::addColumn<int>("limit");
    const QByteArray golden = fileBytes(testData("small.csv"));
    QTest::newRow("nothing") << 0;
    QTest::newRow("in the oil name line") << int(golden.indexOf("Turbine"));
    QTest::newRow("in the calibration blocks") << int(golden.indexOf("caltable"));
    QTest::newRow("in the data lines") << int(golden.size() - 1);
}

void TestCsvExport::shortWriteKeepsTheMark() {
    QFETCH(int, limit);
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    CsvExport csv(store, host);
    FailingDevice device(limit);
    device.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    QCOMPARE(csv.csvFile_export(device, false).code, FileResult::Code::WriteFailed);
    QVERIFY(store.data_changed);
    QCOMPARE(host.titleRefreshes, 0);
    QVERIFY(!csv.isBusy());
}

void TestCsvExport::busyGuardReturnsTheLastResult() {
    MeasurementStore store;
    fillSmallStore(store);
    store.dataPoint_count = 5000; // enough lines for progress updates
    RecordingHost host(store);
    ReenteringProgress progress;
    CsvExport csv(store, host, &progress);
    QTemporaryDir dir;
    // A failed export first, so the "last result" is recognisable.
    QCOMPARE(csv.csvFile_export(dir.filePath(QStringLiteral("no/dir.csv")), false).code,
             FileResult::Code::OpenFailed);

    progress.csv = &csv;
    progress.name = dir.filePath(QStringLiteral("second.csv"));
    const QString first = dir.filePath(QStringLiteral("first.csv"));
    QVERIFY(!csv.csvFile_export(first, true).failed());
    QVERIFY(progress.tried);
    QCOMPARE(progress.inner.code, FileResult::Code::OpenFailed);
    QVERIFY(!QFile::exists(progress.name));
    QCOMPARE(progress.captions.size(), 1);
    QVERIFY(!csv.isBusy());
}

void TestCsvExport::writeLinesWithAnotherSeparator() {
    MeasurementStore store;
    fillSmallStore(store);
    RecordingHost host(store);
    CsvExport csv(store, host);
    QVERIFY(csv.csvFile_writeLines(nullptr, 0, 1, ";"));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(!csv.csvFile_writeLines(&buffer, 2, 2, ";"));
    QVERIFY(csv.csvFile_writeLines(&buffer, 0, MeasurementStore::capacity + 1, ";"));
    QCOMPARE(buffer.size(), 0);
    QVERIFY(!csv.csvFile_writeLines(&buffer, 0, 1, ", "));
    QCOMPARE(buffer.data(), QByteArray("\"2024-03-07\", \"09:05:00\", \"45,10\", \"123\", "
                                       "\"1013,25\", \"0,35\", \"31245\", \"28790\"\r\n"));
}

QTEST_GUILESS_MAIN(TestCsvExport)
#include "test_csvexport.moc"
