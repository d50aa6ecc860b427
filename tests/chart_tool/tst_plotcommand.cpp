// nakos-tool plot, run as a process on a data file written by the program:
// the PNG must be the very page the chart renders from the same file after
// the display fill, the PDF one page, and bad command lines fail cleanly.
#include "chart/chartrender.h"
#include "chart/displayfill.h"
#include "core/store.h"
#include "files/datafile.h"
#include "files/filehost.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <memory>

namespace {

const QString tool = QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool");

struct Run {
    int exitCode = -1;
    QString err;
};

Run runTool(const QStringList &args, const QString &runtimeDir) {
    QProcess p;
    // A private runtime folder keeps Qt's notice about a missing one off
    // standard error, which must hold nothing but the tool's own line.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeDir);
    p.setProcessEnvironment(env);
    p.start(tool, args);
    Run r;
    if (!p.waitForFinished(60000))
        return r;
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.err = QString::fromLocal8Bit(p.readAllStandardError());
    return r;
}

} // namespace

class TestPlotCommand : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void pngIsTheRenderedPage_data();
    void pngIsTheRenderedPage();
    void pdfHasOnePage();
    void badCommandLines_data();
    void badCommandLines();

private:
    QTemporaryDir dir;
    QString input;
};

void TestPlotCommand::initTestCase() {
    QVERIFY(QFile::exists(tool));
    QVERIFY(dir.isValid());
    // 7000 readings (thinned to buckets), two streams, an alarm threshold and
    // an oil name, written by the program's own writer.
    auto store = std::make_unique<MeasurementStore>();
    for (int i = 0; i < 7000; ++i) {
        DataPoint p;
        p.year = 2024;
        p.month = 4;
        p.day = uint8_t(1 + i / 2000);
        p.hour = uint8_t(i / 100 % 24);
        p.minute = uint8_t(i % 60);
        p.second = uint8_t(i * 7 % 60);
        p.water = float(250 + 150 * std::sin(i / 700.0));
        p.pressure = float(1200 + i % 300);
        p.temperature = float(45 + 10 * std::cos(i / 900.0));
        p.soot = float(0.5 + (i % 40) / 80.0);
        p.stream = int16_t(1 + i % 2);
        store->dataPoints[size_t(i)] = p;
    }
    store->dataPoint_count = 7000;
    store->alarmThreshold = 350.0f;
    store->oilName = QStringLiteral("Turbine oil");
    StoreOnlyHost host(*store);
    DataFile file(*store, host);
    input = dir.filePath(QStringLiteral("run.txt"));
    QVERIFY(!file.dataFile_save(input, false).failed());
}

void TestPlotCommand::pngIsTheRenderedPage_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("quantity");
    QTest::addColumn<bool>("asDefault");
    QTest::newRow("water by default") << QStringLiteral("water") << 0 << true;
    QTest::newRow("pressure") << QStringLiteral("pressure") << 1 << false;
    QTest::newRow("temperature") << QStringLiteral("temperature") << 2 << false;
    QTest::newRow("soot") << QStringLiteral("soot") << 3 << false;
}

void TestPlotCommand::pngIsTheRenderedPage() {
    QFETCH(QString, name);
    QFETCH(int, quantity);
    QFETCH(bool, asDefault);
    const QString out = dir.filePath(name + QStringLiteral(".png"));
    QStringList args{QStringLiteral("plot")};
    if (!asDefault)
        args << QStringLiteral("--quantity") << name;
    args << input << out;
    const Run r = runTool(args, dir.path());
    QCOMPARE(r.err, QString());
    QCOMPARE(r.exitCode, 0);
    const QImage png(out);
    QCOMPARE(png.size(), QSize(800, 600));

    // The same file loaded and filled here gives the same page.
    auto store = std::make_unique<MeasurementStore>();
    StoreOnlyHost host(*store);
    DataFile file(*store, host);
    QVERIFY(!file.dataFile_load(input, MergeMode::Replace, false).failed());
    std::array<ChartModel, 4> charts;
    DisplayCharts models{&charts[0], &charts[1], &charts[2], &charts[3]};
    for (int i = 0; i < 4; ++i)
        chart_applyStyle(charts[size_t(i)], ChartQuantity(i), false);
    QVERIFY(display_refreshModels(*store, models));
    QCOMPARE(charts[size_t(quantity)].point_count, 5000);
    const QImage expected = chart_pageImage(charts[size_t(quantity)]);
    QCOMPARE(png.convertToFormat(QImage::Format_RGB32), expected);
    QCOMPARE(png.pixel(69, 39) & 0xffffff, chart_style(ChartQuantity(quantity)).lines & 0xffffff);
}

void TestPlotCommand::pdfHasOnePage() {
    const QString out = dir.filePath(QStringLiteral("temperature.PDF"));
    const Run r = runTool({QStringLiteral("plot"), QStringLiteral("--quantity"),
                           QStringLiteral("temperature"), input, out},
                          dir.path());
    QCOMPARE(r.exitCode, 0);
    QFile pdf(out);
    QVERIFY(pdf.open(QIODevice::ReadOnly));
    const QByteArray bytes = pdf.readAll();
    QVERIFY(bytes.startsWith("%PDF-"));
    QCOMPARE(bytes.count("/Type /Page\n") + bytes.count("/Type /Page\r") +
                 bytes.count("/Type /Page "),
             1);
    // The page is the chart page's size: 800 x 600 pixels at 96 dpi.
    const QRegularExpressionMatch box =
        QRegularExpression(QStringLiteral("/MediaBox \\[0 0 ([0-9.]+) ([0-9.]+)\\]"))
            .match(QString::fromLatin1(bytes));
    QVERIFY(box.hasMatch());
    QCOMPARE(box.captured(1).toDouble(), 600.0);
    QCOMPARE(box.captured(2).toDouble(), 450.0);
}

void TestPlotCommand::badCommandLines_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("message");
    QTest::newRow("log not yet") << QStringList{QStringLiteral("--log"), QStringLiteral("in"),
                                                QStringLiteral("out.png")}
                                 << QStringLiteral("--log");
    QTest::newRow("unknown quantity")
        << QStringList{QStringLiteral("--quantity"), QStringLiteral("oil"), QStringLiteral("in"),
                       QStringLiteral("out.png")}
        << QStringLiteral("--quantity");
    QTest::newRow("one file only")
        << QStringList{QStringLiteral("in")} << QStringLiteral("INPUT and OUTPUT");
    QTest::newRow("missing input")
        << QStringList{QStringLiteral("/nonexistent/x.txt"), QStringLiteral("out.png")}
        << QStringLiteral("x.txt");
}

void TestPlotCommand::badCommandLines() {
    QFETCH(QStringList, args);
    QFETCH(QString, message);
    const Run r = runTool(QStringList{QStringLiteral("plot")} + args, dir.path());
    QVERIFY(r.exitCode != 0);
    QVERIFY2(r.err.startsWith(QStringLiteral("nakos-tool: plot: ")), qPrintable(r.err));
    QVERIFY2(r.err.contains(message), qPrintable(r.err));
    QCOMPARE(r.err.count(QLatin1Char('\n')), 1);
}

QTEST_MAIN(TestPlotCommand)
#include "tst_plotcommand.moc"
