// nakos-tool convert, info and plot, run as the scripts run them.
#include "golden.h"
#include "logtext.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The tool's exit status; -1 when it crashed or hung.
int tool(const QStringList &args, QByteArray *out = nullptr, QByteArray *err = nullptr) {
    QProcess p;
    p.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"), args);
    if (!p.waitForFinished(60000) || p.exitStatus() != QProcess::NormalExit)
        return -1;
    if (out)
        *out = p.readAllStandardOutput();
    if (err)
        *err = p.readAllStandardError();
    return p.exitCode();
}

// What "info" prints for the input, or "failed".
QByteArray summary(const QStringList &input) {
    QByteArray info;
    return tool(QStringList{u"info"_s} + input, &info) == 0 ? info : QByteArray("failed");
}

} // namespace

class TestTool : public QObject {
    Q_OBJECT
private slots:

    // To CSV by the extension, two files merged in either order, the summary.
    void convertAndInfo() {
        QTemporaryDir dir;
        const QString small = testData("small.txt");
        const QByteArray golden = fileBytes(small);
        const QByteArray header = golden.left(golden.indexOf("2024-03-07"));
        const QByteArray linesA = golden.mid(header.size());
        const QByteArray linesB = "2025-01-01\t00:00:01\t1\t2.00\t3.00\t4.00\t5\t6\t7\r\n";
        const QString b = dir.filePath(u"b.txt"_s), out = dir.filePath(u"out.txt"_s);
        QVERIFY(writeFile(b, header + linesB));
        QCOMPARE(tool({u"convert"_s, small, dir.filePath(u"OUT.CSV"_s)}), 0);
        QCOMPARE(fileBytes(dir.filePath(u"OUT.CSV"_s)), fileBytes(testData("small.csv")));
        QCOMPARE(tool({u"convert"_s, small, b, out}), 0);
        QCOMPARE(fileBytes(out), header + linesA + linesB);
        QCOMPARE(tool({u"convert"_s, u"--insert"_s, small, b, out}), 0);
        QCOMPARE(fileBytes(out), header + linesB + linesA);

        QCOMPARE(summary({small}),
                 QByteArray("points: 3\nfirst: 2024-03-07 09:05:00\nlast: 0999-12-31 23:59:59\n"
                            "oilname: Turbine oil T46\nalarmthreshold: 850\ncalsource: 2\n"
                            "caltable: 1\n"));
    }

    // Log files one by one or as a chain, in either order, summed up and drawn.
    void logsAndChain() {
        QTemporaryDir dir;
        const QString day1 = dir.filePath(u"NAKOS435.log"_s),
                      day2 = dir.filePath(u"NAKOS436.log"_s);
        QVERIFY(writeFile(day1, ":oilname=Hydraulic 32\r\n" + fixedLines(2)));
        QVERIFY(writeFile(day2, " 2024-03-06 10:00:00 WATER 5\r\n"));
        const QString out = dir.filePath(u"out.txt"_s);
        QCOMPARE(tool({u"convert"_s, u"--chain"_s, day1, out}), 0);
        QCOMPARE(summary({out}),
                 QByteArray("points: 3\nfirst: 2024-03-05 00:00:00\nlast: 2024-03-06 "
                            "10:00:00\noilname: Hydraulic 32\nalarmthreshold: -1\n"
                            "calsource: 0\ncaltable: 0\n"));
        QCOMPARE(tool({u"convert"_s, u"--log"_s, u"--insert"_s, day2, day1, out}), 0);
        QVERIFY(
            summary({out}).startsWith("points: 3\nfirst: 2024-03-05 00:00:00\nlast: 2024-03-06"));
        QVERIFY(summary({u"--log"_s, day2}).startsWith("points: 1\n"));
        QCOMPARE(tool({u"plot"_s, u"--log"_s, day1, dir.filePath(u"day1.png"_s)}), 0);
        QVERIFY(QFileInfo(dir.filePath(u"day1.png"_s)).size() > 0);
    }

    // A failure names its cause, prints nothing on stdout and writes nothing.
    void failures() {
        QTemporaryDir dir;
        QDir::setCurrent(dir.path());
        const QString missing = u"/no/such/in.txt"_s;
        const QStringList cases[] = {
            {u"convert"_s, missing, u"OUT"_s},
            {u"convert"_s, testData("small.txt"), u"/no/such/dir/out.txt"_s},
            {u"convert"_s, u"--log"_s, u"/no/such/a.log"_s, u"OUT"_s},
            {u"convert"_s, u"--chain"_s, u"/no/such/NAKOS411.log"_s, u"OUT"_s},
            {u"info"_s, missing}};
        for (const QStringList &args : cases) {
            QByteArray out, err;
            QVERIFY(tool(args, &out, &err) > 0);
            QVERIFY2(err.contains(args.filter(u"/no/such"_s).constFirst().toUtf8()),
                     err.constData());
            QVERIFY(out.isEmpty());
        }
        QByteArray err;
        QVERIFY(tool({u"convert"_s, u"--chain"_s, u"chain.log"_s, u"OUT"_s}, nullptr, &err) > 0);
        QVERIFY2(err.contains("Invalid chain start filename"), err.constData());
        QVERIFY(!QFile::exists(dir.filePath(u"OUT"_s)));
    }
};

QTEST_GUILESS_MAIN(TestTool)
#include "test_tool.moc"
