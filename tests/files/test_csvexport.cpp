// The export's failure paths; its bytes are pinned by the Export command's
// and nakos-tool's tests against tests/data/files/small.csv.
#include "fakes.h"

#include "files/csvexport.h"

#include <QTemporaryDir>
#include <QTest>

#include <utility>

// A progress window that starts a second export while the first one runs,
// as a click handled during a progress update could.
class ReenteringProgress : public RecordingProgress {
public:
    CsvExport *csv = nullptr;
    QString name;
    FileResult inner;
    void progress_setValue(int percent) override {
        RecordingProgress::progress_setValue(percent);
        if (csv && percent > 0)
            inner = std::exchange(csv, nullptr)->csvFile_export(name, true);
    }
};

class TestCsvExport : public QObject {
    Q_OBJECT
private slots:
    void shortWriteKeepsTheMark();
    void busyGuardReturnsTheLastResult();
};

void TestCsvExport::shortWriteKeepsTheMark() {
    const QByteArray golden = fileBytes(testData("small.csv"));
    // At the start, in the oil name, the calibration blocks, the last line.
    for (const char *at : {"", "Turbine", "caltable", "1000000"}) {
        MeasurementStore store;
        fillSmallStore(store);
        RecordingHost host(store);
        CsvExport csv(store, host);
        FailingDevice device(golden.indexOf(at));
        device.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        QCOMPARE(csv.csvFile_export(device, false).code, FileResult::Code::WriteFailed);
        QVERIFY(golden.startsWith(device.written));
        QVERIFY(store.data_changed);
        QCOMPARE(host.titleRefreshes, 0);
        QVERIFY(!csv.isBusy());
    }
}

void TestCsvExport::busyGuardReturnsTheLastResult() {
    MeasurementStore store;
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
    QVERIFY(!csv.csvFile_export(dir.filePath(QStringLiteral("first.csv")), true).failed());
    QVERIFY(!progress.csv);
    QCOMPARE(progress.inner.code, FileResult::Code::OpenFailed);
    QVERIFY(!QFile::exists(progress.name));
    QVERIFY(!csv.isBusy());
    QCOMPARE(progress.captions, QStringList{QStringLiteral("Saving file...")});
    QCOMPARE(progress.values.last(), 0); // the bar goes back to 0 before hiding
    QVERIFY(!progress.visible);
}

QTEST_GUILESS_MAIN(TestCsvExport)
#include "test_csvexport.moc"
