// nakos-tool plot, run as a process on a data file written by the program:
// the PNG must be the very page the chart renders from the same file after
// the display fill, and bad command lines fail cleanly.
#include "chart/chartrender.h"
#include "chart/displayfill.h"
#include "core/store.h"
#include "files/datafile.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cmath>
#include <memory>

class TestPlotCommand : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QVERIFY(dir.isValid());
        // 7000 readings (thinned to buckets) of two streams, an alarm
        // threshold and an oil name, written by the program's own writer.
        auto store = std::make_unique<MeasurementStore>();
        for (int i = 0; i < 7000; ++i) {
            DataPoint &p = store->dataPoints[size_t(i)];
            p = {.year = 2024, .month = 4, .day = uint8_t(1 + i / 2000)};
            p.hour = uint8_t(i / 100 % 24);
            p.minute = uint8_t(i % 60);
            p.water = float(250 + 150 * std::sin(i / 700.0));
            p.temperature = float(45 + 10 * std::cos(i / 900.0));
            p.stream = int16_t(1 + i % 2);
        }
        store->dataPoint_count = 7000;
        store->alarmThreshold = 350.0f;
        store->oilName = QStringLiteral("Turbine oil");
        input = dir.filePath(QStringLiteral("run.txt"));
        QVERIFY(!DataFile(*store).dataFile_save(input, false).failed());
    }

    void pngIsTheRenderedPage_data() {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("quantity");
        QTest::newRow("water by default") << QStringList{} << 0;
        QTest::newRow("temperature")
            << QStringList{QStringLiteral("--quantity"), QStringLiteral("temperature")} << 2;
    }

    void pngIsTheRenderedPage() {
        QFETCH(QStringList, options);
        QFETCH(int, quantity);
        const QString out = dir.filePath(QStringLiteral("%1.png").arg(quantity));
        QString err;
        QCOMPARE(run(options + QStringList{input, out}, err), 0);
        QCOMPARE(err, QString());
        // The same file loaded and filled here gives the same page.
        auto store = std::make_unique<MeasurementStore>();
        QVERIFY(!DataFile(*store).dataFile_load(input, MergeMode::Replace, false).failed());
        std::array<ChartModel, 4> charts;
        for (int i = 0; i < 4; ++i)
            chart_applyStyle(charts[size_t(i)], ChartQuantity(i), false);
        QVERIFY(display_refreshModels(*store, {&charts[0], &charts[1], &charts[2], &charts[3]}));
        ChartModel &chart = charts[size_t(quantity)];
        QCOMPARE(chart.point_count, 5000);
        QCOMPARE(QImage(out).convertToFormat(QImage::Format_RGB32), chart_pageImage(chart));
    }

    void badCommandLines_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("message");
        const QString in = QStringLiteral("in"), png = QStringLiteral("out.png");
        QTest::newRow("unknown quantity")
            << QStringList{QStringLiteral("--quantity"), QStringLiteral("oil"), in, png}
            << QStringLiteral("--quantity");
        QTest::newRow("missing input")
            << QStringList{QStringLiteral("/nonexistent/x.txt"), png} << QStringLiteral("x.txt");
    }

    void badCommandLines() {
        QFETCH(QStringList, args);
        QFETCH(QString, message);
        QString err;
        QVERIFY(run(args, err) > 0);
        // One line, and only the tool's own.
        QVERIFY2(err.startsWith(QStringLiteral("nakos-tool: plot: ")) && err.contains(message) &&
                     err.count(QLatin1Char('\n')) == 1,
                 qPrintable(err));
    }

private:
    // Runs "nakos-tool plot args"; the exit code, or -1 when it did not end
    // normally.
    int run(const QStringList &args, QString &err) {
        QProcess p;
        // A private runtime folder keeps Qt's notice about a missing one off
        // standard error, which must hold nothing but the tool's own line.
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir.path());
        p.setProcessEnvironment(env);
        p.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"),
                QStringList{QStringLiteral("plot")} + args);
        if (!p.waitForFinished(60000) || p.exitStatus() != QProcess::NormalExit)
            return -1;
        err = QString::fromLocal8Bit(p.readAllStandardError());
        return p.exitCode();
    }

    QTemporaryDir dir;
    QString input;
};

QTEST_MAIN(TestPlotCommand)
#include "tst_plotcommand.moc"
