// nakos-tool convert and info, run as the scripts run them.
#include "fakes.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run {
    int status = -1;
    QByteArray out;
    QByteArray err;
};

Run tool(const QStringList &args) {
    QProcess p;
    p.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"), args);
    Run r;
    if (!p.waitForFinished(60000))
        return r;
    r.status = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = p.readAllStandardOutput();
    r.err = p.readAllStandardError();
    return r;
}

// The tool's own error lines (the platform may add warnings of its own).
QList<QByteArray> toolErrors(const QByteArray &err) {
    QList<QByteArray> lines;
    for (const QByteArray &line : err.split('\n')) {
        if (line.startsWith("nakos-tool: "))
            lines << line;
    }
    return lines;
}

} // namespace

class TestTool : public QObject {
    Q_OBJECT
private slots:
    void convertIsByteExact_data();
    void convertIsByteExact();
    void convertMergesInputs_data();
    void convertMergesInputs();
    void info();
    void failures_data();
    void failures();
};

void TestTool::convertIsByteExact_data() {
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("golden");
    QTest::newRow("native") << QStringLiteral("out.txt") << testData("small.txt");
    QTest::newRow("csv") << QStringLiteral("out.csv") << testData("small.csv");
    QTest::newRow("CSV in capitals") << QStringLiteral("OUT.CSV") << testData("small.csv");
}

void TestTool::convertIsByteExact() {
    QFETCH(QString, output);
    QFETCH(QString, golden);
    QTemporaryDir dir;
    const QString out = dir.filePath(output);
    const Run r = tool({QStringLiteral("convert"), testData("small.txt"), out});
    QCOMPARE(r.status, 0);
    QCOMPARE(fileBytes(out), fileBytes(golden));
}

void TestTool::convertMergesInputs_data() {
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("order"); // which file's lines come first
    QTest::newRow("append") << QString() << QByteArray("ab");
    QTest::newRow("insert") << QStringLiteral("--insert") << QByteArray("ba");
}

void TestTool::convertMergesInputs() {
    QFETCH(QString, option);
    QFETCH(QByteArray, order);
    QTemporaryDir dir;
    const QByteArray golden = fileBytes(testData("small.txt"));
    const qsizetype dataStart = golden.indexOf("2024-03-07");
    const QByteArray header = golden.left(dataStart);
    const QByteArray linesA = golden.mid(dataStart);
    const QByteArray linesB = "2025-01-01\t00:00:01\t1\t2.00\t3.00\t4.00\t5\t6\t7\r\n";
    const QString second = dir.filePath(QStringLiteral("b.txt"));
    {
        QFile f(second);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(header + linesB);
    }
    const QString out = dir.filePath(QStringLiteral("merged.txt"));
    QStringList args{QStringLiteral("convert")};
    if (!option.isEmpty())
        args << option;
    args << testData("small.txt") << second << out;
    QCOMPARE(tool(args).status, 0);
    const QByteArray expected = header + (order == "ab" ? linesA + linesB : linesB + linesA);
    QCOMPARE(fileBytes(out), expected);
}

void TestTool::info() {
    const Run r = tool({QStringLiteral("info"), testData("small.txt")});
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out, QByteArray("points: 3\n"
                               "first: 2024-03-07 09:05:00\n"
                               "last: 0999-12-31 23:59:59\n"
                               "oilname: Turbine oil T46\n"
                               "alarmthreshold: 850\n"
                               "calsource: 2\n"
                               "caltable: 1\n"));
}

void TestTool::failures_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QByteArray>("mentions");
    const QString small = testData("small.txt");
    QTest::newRow("missing input")
        << QStringList{QStringLiteral("convert"), QStringLiteral("/no/such/in.txt"),
                       QStringLiteral("OUT")}
        << QByteArray("/no/such/in.txt");
    QTest::newRow("unwritable output")
        << QStringList{QStringLiteral("convert"), small, QStringLiteral("/no/such/dir/out.txt")}
        << QByteArray("/no/such/dir/out.txt");
    QTest::newRow("no output") << QStringList{QStringLiteral("convert"), small}
                               << QByteArray("OUTPUT");
    QTest::newRow("log input not yet")
        << QStringList{QStringLiteral("convert"), QStringLiteral("--log"), small,
                       QStringLiteral("OUT")}
        << QByteArray("--log");
    QTest::newRow("chain input not yet")
        << QStringList{QStringLiteral("convert"), QStringLiteral("--chain"), small,
                       QStringLiteral("OUT")}
        << QByteArray("--chain");
    QTest::newRow("info of a missing file")
        << QStringList{QStringLiteral("info"), QStringLiteral("/no/such/in.txt")}
        << QByteArray("/no/such/in.txt");
    QTest::newRow("info --log not yet")
        << QStringList{QStringLiteral("info"), QStringLiteral("--log"), small}
        << QByteArray("--log");
}

void TestTool::failures() {
    QFETCH(QStringList, args);
    QFETCH(QByteArray, mentions);
    QTemporaryDir dir;
    QDir::setCurrent(dir.path()); // "OUT" must not appear anywhere else
    const Run r = tool(args);
    QVERIFY(r.status > 0);
    const QList<QByteArray> errors = toolErrors(r.err);
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors[0].contains(mentions), errors[0].constData());
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("OUT"))));
    QVERIFY(r.out.isEmpty());
}

QTEST_GUILESS_MAIN(TestTool)
#include "test_tool.moc"
