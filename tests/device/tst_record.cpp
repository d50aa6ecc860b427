// nakos-tool record, run as a separate process against the simulated sensor
// in this process, its output read back with the native reader.
#include "core/store.h"
#include "files/datafile.h"
#include "sensorsim.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

constexpr int kWaitMs = 20000;

// The tool started in `dir` with a settings file of its own; `args` are
// the words after "record", separated by blanks.
struct Run {
    Run(const QTemporaryDir &dir, const QString &args) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("NAKOS_SETTINGS_FILE"), dir.filePath(QStringLiteral("s.reg")));
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(dir.path());
        process.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"),
                      QStringLiteral("record ").append(args).split(QLatin1Char(' ')));
    }
    bool finish() {
        QSignalSpy finished(&process, &QProcess::finished);
        return process.state() == QProcess::NotRunning || finished.wait(kWaitMs);
    }
    // The tool's own lines on standard error; Qt may add platform notes.
    QList<QByteArray> toolLines() {
        QList<QByteArray> lines = process.readAllStandardError().split('\n');
        lines.removeIf([](const QByteArray &l) { return !l.startsWith("nakos-tool: "); });
        return lines;
    }
    QProcess process;
};

} // namespace

class TestRecord : public QObject {
    Q_OBJECT

private slots:
    void recordsToTheOutput_data();
    void recordsToTheOutput();
    void badCommandLines_data();
    void badCommandLines();
};

void TestRecord::recordsToTheOutput_data() {
    QTest::addColumn<bool>("polls"); // three polls, or until SIGTERM
    QTest::newRow("three polls") << true;
    QTest::newRow("until SIGTERM") << false;
}

void TestRecord::recordsToTheOutput() {
    QFETCH(bool, polls);
    QTemporaryDir dir;
    SensorSimulator sim(SimOptions{.readingIntervalMs = 0, .prefill = 5, .faults = {}});
    QVERIFY(!sim.open());
    QSignalSpy commands(&sim, &SensorSimulator::commandReceived);
    Run run(dir, QStringLiteral("--port %1 --interval 300%2 out.txt")
                     .arg(sim.portPath(), polls ? QStringLiteral(" --polls 3") : QString()));
    if (!polls) {
        // The second command comes with the first tick, after the first
        // "list" poll has been applied.
        QTRY_VERIFY_WITH_TIMEOUT(commands.size() >= 2, kWaitMs);
        run.process.terminate();
    }
    QVERIFY(run.finish());
    QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(run.process.exitCode(), 0);
    QCOMPARE(run.toolLines(), QList<QByteArray>());
    // The program's autosave folder was prepared as at start-up.
    QVERIFY(QFileInfo(dir.filePath(QStringLiteral("data/autosave"))).isDir());

    auto store = std::make_unique<MeasurementStore>();
    DataFile file(*store);
    QVERIFY(!file.dataFile_load(dir.filePath(QStringLiteral("out.txt")), MergeMode::Replace, false)
                 .failed());
    QCOMPARE(store->dataPoint_count, 5);
    if (!polls)
        return;
    QByteArrayList sent;
    for (const QList<QVariant> &c : commands)
        sent << c.first().toByteArray();
    QCOMPARE(sent.join(','),
             "list,alarmlimit get,calibration get,list,alarmlimit get,calibration get,list");
    QCOMPARE(store->alarmThreshold, 500.0f);
    QCOMPARE(store->calSource.count, int16_t(3));
    QCOMPARE(store->calTable.count, int16_t(2));
}

void TestRecord::badCommandLines_data() {
    QTest::addColumn<QString>("args");
    QTest::addColumn<QByteArray>("error"); // the last line on standard error
    const auto row = [](const char *name, const char *args, const char *error) {
        QTest::newRow(name) << QString::fromLatin1(args) << QByteArray(error);
    };
    row("no port", "out.txt", "record: expected --port DEVICE and one OUTPUT");
    row("zero polls", "--port 1 --polls 0 out.txt",
        "record: --polls must be a positive whole number");
    row("output cannot be created", "--port /nonexistent/tty --polls 1 /nonexistent/dir/out.txt",
        "");
}

void TestRecord::badCommandLines() {
    QFETCH(QString, args);
    QFETCH(QByteArray, error);
    QTemporaryDir dir;
    Run run(dir, args);
    QVERIFY(run.finish());
    QVERIFY(run.process.exitCode() != 0);
    // One line names the failure. A port that cannot be opened comes before
    // it: its device and the system's reason, then the warning, once.
    const QList<QByteArray> lines = run.toolLines();
    QCOMPARE(lines.size(), error.isEmpty() ? 3 : 1);
    if (!error.isEmpty()) {
        QCOMPARE(lines.last(), "nakos-tool: " + error);
        return;
    }
    const QByteArray opening = "nakos-tool: cannot open /nonexistent/tty: ";
    QVERIFY2(lines[0].startsWith(opening) && lines[0].size() > opening.size(), lines[0]);
    QCOMPARE(lines[1], "nakos-tool: Com port not available");
}

QTEST_GUILESS_MAIN(TestRecord)
#include "tst_record.moc"
