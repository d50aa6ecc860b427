// nakos-tool record, run as a separate process against the simulated sensor
// in this process, its output read back with the native reader.
#include "core/store.h"
#include "files/datafile.h"
#include "files/filehost.h"
#include "sensorsim.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

constexpr int kWaitMs = 20000;

QString toolPath() {
    return QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool");
}

SimOptions prefilled(int n) {
    SimOptions o;
    o.readingIntervalMs = 0;
    o.prefill = n;
    return o;
}

struct Run {
    explicit Run(const QTemporaryDir &dir) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("NAKOS_SETTINGS_FILE"), dir.filePath(QStringLiteral("s.reg")));
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(dir.path());
    }
    void start(const QStringList &args) {
        process.start(toolPath(), QStringList{QStringLiteral("record")} + args);
    }
    bool finish() {
        QSignalSpy finished(&process, &QProcess::finished);
        return process.state() == QProcess::NotRunning || finished.wait(kWaitMs);
    }
    QProcess process;
};

// The tool's own lines on standard error; Qt may add platform notes.
QList<QByteArray> toolLines(const QByteArray &err) {
    QList<QByteArray> lines;
    for (const QByteArray &l : err.split('\n')) {
        if (l.startsWith("nakos-tool: "))
            lines << l;
    }
    return lines;
}

std::unique_ptr<MeasurementStore> load(const QString &fileName) {
    auto store = std::make_unique<MeasurementStore>();
    StoreOnlyHost host(*store);
    DataFile file(*store, host);
    if (file.dataFile_load(fileName, MergeMode::Replace, false).failed())
        return nullptr;
    return store;
}

} // namespace

class TestRecord : public QObject {
    Q_OBJECT

private slots:
    void threePollsWriteReadingsThresholdAndTables();
    void sigtermWritesTheOutput();
    void missingPortStillWritesAnEmptyStore();
    void badCommandLines_data();
    void badCommandLines();
};

void TestRecord::threePollsWriteReadingsThresholdAndTables() {
    QTemporaryDir dir;
    SensorSimulator sim(prefilled(5));
    QVERIFY(!sim.open());
    QSignalSpy commands(&sim, &SensorSimulator::commandReceived);
    Run run(dir);
    run.start({QStringLiteral("--port"), sim.portPath(), QStringLiteral("--polls"),
               QStringLiteral("3"), QStringLiteral("--interval"), QStringLiteral("300"),
               QStringLiteral("out.txt")});
    QVERIFY(run.finish());
    QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(run.process.exitCode(), 0);
    QCOMPARE(toolLines(run.process.readAllStandardError()), QList<QByteArray>());

    QStringList sent;
    for (const QList<QVariant> &c : commands)
        sent << QString::fromLatin1(c.first().toByteArray());
    const QString tick = QStringLiteral("alarmlimit get,calibration get,list");
    QCOMPARE(sent.join(QLatin1Char(',')), QStringLiteral("list,") + tick + QLatin1Char(',') + tick);

    const auto store = load(dir.filePath(QStringLiteral("out.txt")));
    QVERIFY(store);
    QCOMPARE(store->dataPoint_count, 5);
    QCOMPARE(store->alarmThreshold, 500.0f);
    QCOMPARE(store->calSource.count, int16_t(3));
    QCOMPARE(store->calTable.count, int16_t(2));
    QCOMPARE(store->calTable.pairs[1].second, 210.0f);
    // The program's autosave folder was prepared as at start-up.
    QVERIFY(QFileInfo(dir.filePath(QStringLiteral("data/autosave"))).isDir());
}

void TestRecord::sigtermWritesTheOutput() {
    QTemporaryDir dir;
    SensorSimulator sim(prefilled(4));
    QVERIFY(!sim.open());
    QSignalSpy commands(&sim, &SensorSimulator::commandReceived);
    Run run(dir);
    run.start({QStringLiteral("--port"), sim.portPath(), QStringLiteral("--interval"),
               QStringLiteral("300"), QStringLiteral("out.txt")});
    // The second command comes with the first tick, after the first "list"
    // poll has been applied.
    QTRY_VERIFY_WITH_TIMEOUT(commands.size() >= 2, kWaitMs);
    run.process.terminate();
    QVERIFY(run.finish());
    QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(run.process.exitCode(), 0);
    const auto store = load(dir.filePath(QStringLiteral("out.txt")));
    QVERIFY(store);
    QCOMPARE(store->dataPoint_count, 4);
}

void TestRecord::missingPortStillWritesAnEmptyStore() {
    QTemporaryDir dir;
    Run run(dir);
    run.start({QStringLiteral("--port"), QStringLiteral("/nonexistent/tty"),
               QStringLiteral("--polls"), QStringLiteral("2"), QStringLiteral("--interval"),
               QStringLiteral("50"), QStringLiteral("out.txt")});
    QVERIFY(run.finish());
    QCOMPARE(run.process.exitCode(), 0);
    // Warned once for the run, as the program does.
    QCOMPARE(toolLines(run.process.readAllStandardError()),
             QList<QByteArray>({"nakos-tool: Com port not available"}));
    const auto store = load(dir.filePath(QStringLiteral("out.txt")));
    QVERIFY(store);
    QCOMPARE(store->dataPoint_count, 0);
}

void TestRecord::badCommandLines_data() {
    QTest::addColumn<QStringList>("args");
    QTest::newRow("no port") << QStringList{QStringLiteral("out.txt")};
    QTest::newRow("no output") << QStringList{QStringLiteral("--port"), QStringLiteral("1")};
    QTest::newRow("two outputs") << QStringList{QStringLiteral("--port"), QStringLiteral("1"),
                                                QStringLiteral("a.txt"), QStringLiteral("b.txt")};
    QTest::newRow("zero polls") << QStringList{QStringLiteral("--port"), QStringLiteral("1"),
                                               QStringLiteral("--polls"), QStringLiteral("0"),
                                               QStringLiteral("out.txt")};
    QTest::newRow("interval not a number")
        << QStringList{QStringLiteral("--port"), QStringLiteral("1"), QStringLiteral("--interval"),
                       QStringLiteral("fast"), QStringLiteral("out.txt")};
    QTest::newRow("unknown option")
        << QStringList{QStringLiteral("--port"), QStringLiteral("1"), QStringLiteral("--baud"),
                       QStringLiteral("9600"), QStringLiteral("out.txt")};
    QTest::newRow("output cannot be created") << QStringList{
        QStringLiteral("--port"), QStringLiteral("/nonexistent/tty"), QStringLiteral("--polls"),
        QStringLiteral("1"), QStringLiteral("/nonexistent/dir/out.txt")};
}

void TestRecord::badCommandLines() {
    QFETCH(QStringList, args);
    QTemporaryDir dir;
    Run run(dir);
    run.start(args);
    QVERIFY(run.finish());
    QVERIFY(run.process.exitCode() != 0);
    const QByteArray err = run.process.readAllStandardError();
    // One line names the failure; a missing port warns before it.
    QVERIFY(err.endsWith('\n'));
    const QList<QByteArray> lines = toolLines(err);
    QVERIFY(!lines.isEmpty());
    QVERIFY(err.endsWith(lines.last() + '\n'));
}

QTEST_GUILESS_MAIN(TestRecord)
#include "tst_record.moc"
