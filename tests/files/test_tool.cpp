// nakos-tool convert and info, run as the scripts run them.
#include "golden.h"

#include <QDir>
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

} // namespace

class TestTool : public QObject {
    Q_OBJECT
private slots:
    void convertAndInfo();
    void failures();
};

// To CSV by the extension, two files merged in either order, the summary.
void TestTool::convertAndInfo() {
    QTemporaryDir dir;
    const QString small = testData("small.txt");
    const QByteArray golden = fileBytes(small);
    const QByteArray header = golden.left(golden.indexOf("2024-03-07"));
    const QByteArray linesA = golden.mid(header.size());
    const QByteArray linesB = "2025-01-01\t00:00:01\t1\t2.00\t3.00\t4.00\t5\t6\t7\r\n";
    const QString b = dir.filePath(u"b.txt"_s), out = dir.filePath(u"out.txt"_s);
    QFile f(b);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(header + linesB);
    f.close();
    QCOMPARE(tool({u"convert"_s, small, dir.filePath(u"OUT.CSV"_s)}), 0);
    QCOMPARE(fileBytes(dir.filePath(u"OUT.CSV"_s)), fileBytes(testData("small.csv")));
    QCOMPARE(tool({u"convert"_s, small, b, out}), 0);
    QCOMPARE(fileBytes(out), header + linesA + linesB);
    QCOMPARE(tool({u"convert"_s, u"--insert"_s, small, b, out}), 0);
    QCOMPARE(fileBytes(out), header + linesB + linesA);

    QByteArray info;
    QCOMPARE(tool({u"info"_s, small}, &info), 0);
    QCOMPARE(info, QByteArray("points: 3\nfirst: 2024-03-07 09:05:00\nlast: 0999-12-31 23:59:59\n"
                              "oilname: Turbine oil T46\nalarmthreshold: 850\ncalsource: 2\n"
                              "caltable: 1\n"));
}

// A failure names its cause, prints nothing on stdout and writes nothing.
void TestTool::failures() {
    QTemporaryDir dir;
    QDir::setCurrent(dir.path());
    const QString missing = u"/no/such/in.txt"_s;
    const QStringList cases[] = {{u"convert"_s, missing, u"OUT"_s},
                                 {u"convert"_s, testData("small.txt"), u"/no/such/dir/out.txt"_s},
                                 {u"info"_s, missing}};
    for (const QStringList &args : cases) {
        QByteArray out, err;
        QVERIFY(tool(args, &out, &err) > 0);
        QVERIFY2(err.contains(args.filter(u"/no/such"_s).constFirst().toUtf8()), err.constData());
        QVERIFY(out.isEmpty());
    }
    QVERIFY(!QFile::exists(dir.filePath(u"OUT"_s)));
}

QTEST_GUILESS_MAIN(TestTool)
#include "test_tool.moc"
