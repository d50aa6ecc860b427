// nakos-tool convert and info, run as the scripts run them.
#include "fakes.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct Run {
    int status = -1;
    QByteArray out;
    QList<QByteArray> errors; // the tool's own lines; the platform may add others
};

Run tool(const QStringList &args) {
    QProcess p;
    p.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"), args);
    Run r;
    if (!p.waitForFinished(60000))
        return r;
    r.status = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = p.readAllStandardOutput();
    for (const QByteArray &line : p.readAllStandardError().split('\n')) {
        if (line.startsWith("nakos-tool: "))
            r.errors << line;
    }
    return r;
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
    QCOMPARE(tool({u"convert"_s, small, dir.filePath(u"OUT.CSV"_s)}).status, 0);
    QCOMPARE(fileBytes(dir.filePath(u"OUT.CSV"_s)), fileBytes(testData("small.csv")));
    QCOMPARE(tool({u"convert"_s, small, b, out}).status, 0);
    QCOMPARE(fileBytes(out), header + linesA + linesB);
    QCOMPARE(tool({u"convert"_s, u"--insert"_s, small, b, out}).status, 0);
    QCOMPARE(fileBytes(out), header + linesB + linesA);

    const Run r = tool({u"info"_s, small});
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out, QByteArray("points: 3\nfirst: 2024-03-07 09:05:00\nlast: 0999-12-31 23:59:59\n"
                               "oilname: Turbine oil T46\nalarmthreshold: 850\ncalsource: 2\n"
                               "caltable: 1\n"));
}

// Each failure names its cause in one line and writes nothing.
void TestTool::failures() {
    QTemporaryDir dir;
    QDir::setCurrent(dir.path());
    const QString small = testData("small.txt"), missing = u"/no/such/in.txt"_s;
    const std::pair<QStringList, QString> cases[] = {
        {{u"convert"_s, missing, u"OUT"_s}, missing},
        {{u"info"_s, missing}, missing},
        {{u"convert"_s, small, u"/no/such/dir/out.txt"_s}, u"/no/such/dir/out.txt"_s},
        {{u"convert"_s, u"--log"_s, small, u"OUT"_s}, u"--log"_s},
    };
    for (const auto &[args, mentions] : cases) {
        const Run r = tool(args);
        QVERIFY(r.status > 0);
        QCOMPARE(r.errors.size(), 1);
        QVERIFY2(r.errors[0].contains(mentions.toUtf8()), r.errors[0].constData());
        QVERIFY(r.out.isEmpty());
    }
    QVERIFY(!QFile::exists(dir.filePath(u"OUT"_s)));
}

QTEST_GUILESS_MAIN(TestTool)
#include "test_tool.moc"
