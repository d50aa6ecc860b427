// nakos-tool plot, run as a process on a data file of three streams with
// an alarm threshold and an oil name: the PNG must be the very page the
// chart renders from the same file after the display fill, and bad command
// lines fail cleanly.
#include "chart/chartrender.h"
#include "chart/displayfill.h"
#include "core/store.h"
#include "files/datafile.h"

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <memory>

class TestPlotCommand : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void plot_data() {
        QTest::addColumn<QStringList>("args"); // between "plot" and the output
        QTest::addColumn<int>("quantity");     // of the page, -1 for a failure
        QTest::addColumn<QString>("message");  // in the failure's line
        const QString option = QStringLiteral("--quantity");
        QTest::newRow("water by default") << QStringList{input} << 0 << QString();
        QTest::newRow("temperature")
            << QStringList{option, QStringLiteral("temperature"), input} << 2 << QString();
        QTest::newRow("unknown quantity")
            << QStringList{option, QStringLiteral("oil"), input} << -1 << option;
        QTest::newRow("missing input")
            << QStringList{QStringLiteral("/nonexistent/x.txt")} << -1 << QStringLiteral("x.txt");
    }

    void plot() {
        QFETCH(QStringList, args);
        QFETCH(int, quantity);
        QFETCH(QString, message);
        const QString out = dir.filePath(QStringLiteral("%1.png").arg(quantity));
        QProcess p;
        // A private runtime folder keeps Qt's notice about a missing one off
        // standard error, which must hold nothing but the tool's own line.
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir.path());
        p.setProcessEnvironment(env);
        p.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"),
                QStringList{QStringLiteral("plot")} + args + QStringList{out});
        QVERIFY(p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit);
        const QString err = QString::fromLocal8Bit(p.readAllStandardError());
        if (quantity < 0) {
            QVERIFY(p.exitCode() > 0);
            QVERIFY2(err.startsWith(QStringLiteral("nakos-tool: plot: ")) &&
                         err.contains(message) && err.count(QLatin1Char('\n')) == 1,
                     qPrintable(err));
            return;
        }
        QCOMPARE(p.exitCode(), 0);
        QCOMPARE(err, QString());
        // The same file loaded and filled here gives the same page.
        auto store = std::make_unique<MeasurementStore>();
        QVERIFY(!DataFile(*store).dataFile_load(input, MergeMode::Replace, false).failed());
        std::array<ChartModel, 4> charts;
        for (int i = 0; i < 4; ++i)
            chart_applyStyle(charts[size_t(i)], ChartQuantity(i), false);
        QVERIFY(display_refreshModels(*store, {&charts[0], &charts[1], &charts[2], &charts[3]}));
        QCOMPARE(QImage(out).convertToFormat(QImage::Format_RGB32),
                 chart_pageImage(charts[size_t(quantity)]));
    }

private:
    QTemporaryDir dir;
    const QString input = QStringLiteral(NAKOS_TEST_DATA "/files/small.txt");
};

QTEST_MAIN(TestPlotCommand)
#include "tst_plotcommand.moc"
