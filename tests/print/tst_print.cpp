// Printing the charts, on recorded pages and as PDF files read back with
// poppler.
#include "chart/chartstyle.h"
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "core/store.h"
#include "print/ui/printcommand.h"
#include "print/ui/qtprinter.h"
#include "settings/settings.h"
#include "support/sessionfixture.h"

#include <QDir>
#include <QMdiArea>
#include <QPrinter>
#include <QProcess>
#include <QTest>

#include <deque>
#include <memory>

namespace {

const QRgb white = qRgb(255, 255, 255);

// Hands out a white page per document, 550 x 425 or turned by the
// orientation, and keeps them all.
struct PageRecorder : ChartPrinter {
    struct Page {
        int index;
        PrintSetup setup;
        QImage image;
    };
    QPaintDevice *print_document(ChartQuantity, int index, const PrintSetup &setup) override {
        const bool portrait = setup.orientation == QPageLayout::Portrait;
        QImage paper(portrait ? QSize(425, 550) : QSize(550, 425), QImage::Format_RGB32);
        paper.fill(white);
        pages.push_back({index, setup, paper});
        return &pages.back().image;
    }
    std::deque<Page> pages; // handed-out devices must not move
};

struct ScriptedDialog : PrintDialogSeam {
    std::optional<PrintSetup> print_selectPrinter() override {
        ++shown;
        return answer;
    }
    std::optional<PrintSetup> answer;
    int shown = 0;
};

// The smallest rectangle holding every pixel that is not white.
QRect inkBox(const QImage &img) {
    QRect ink;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            if (img.pixel(x, y) != white)
                ink |= QRect(x, y, 1, 1);
    return ink;
}

} // namespace

class TestPrint : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        fixture = std::make_unique<SessionFixture>();
        store = &fixture->store();
        for (int i = 0; i < 400; ++i) {
            DataPoint &p = store->dataPoints[size_t(i)];
            p = {.year = 2024, .month = 5, .day = 6, .hour = uint8_t(i / 60)};
            p.minute = uint8_t(i % 60);
            p.water = 200.0f + float(i % 50);
            p.temperature = 40.0f + float(i % 7);
            p.pressure = 1000.0f + float(i % 30);
        }
        store->dataPoint_count = 400;
        area = std::make_unique<QMdiArea>();
        area->resize(1400, 900);
        area->show();
        set = std::make_unique<ChartSet>(fixture->session, area.get());
        set->createCharts();
        set->display_data();
    }

    // Through the print command: the dialog always comes first; then water,
    // temperature, pressure, each if its setting is on and it is not busy
    // drawing, one document each with the dialog's copies and orientation,
    // the page on 90 % of the paper, 5 % in from the edges.
    void selection_data() {
        QTest::addColumn<bool>("cancel");
        QTest::addColumn<QList<bool>>("settings"); // water, temperature, pressure
        QTest::addColumn<bool>("waterBusy");
        QTest::addColumn<QList<ChartQuantity>>("expected");
        using Q = ChartQuantity;
        const QList<bool> all{1, 1, 1};
        QTest::newRow("all") << false << all << false
                             << QList{Q::Water, Q::Temperature, Q::Pressure};
        QTest::newRow("water, pressure")
            << false << QList<bool>{1, 0, 1} << false << QList{Q::Water, Q::Pressure};
        QTest::newRow("all off") << false << QList<bool>{0, 0, 0} << false << QList<Q>{};
        QTest::newRow("cancelled") << true << all << false << QList<Q>{};
        QTest::newRow("water busy") << false << all << true << QList{Q::Temperature, Q::Pressure};
    }

    void selection() {
        QFETCH(bool, cancel);
        QFETCH(QList<bool>, settings);
        QFETCH(bool, waterBusy);
        DisplayFlags flags;
        flags.printWater = settings[0];
        flags.printTemperature = settings[1];
        flags.printPressure = settings[2];
        for (const auto orientation : {QPageLayout::Landscape, QPageLayout::Portrait}) {
            ScriptedDialog dialog;
            if (!cancel)
                dialog.answer = PrintSetup{2, orientation, QString()};
            PageRecorder printer;
            set->chart(ChartQuantity::Water)->model().drawing = waterBusy;
            PrintCommand(dialog, printer).file_print(*set, flags);
            set->chart(ChartQuantity::Water)->model().drawing = false;

            QCOMPARE(dialog.shown, 1);
            QList<ChartQuantity> printed; // told by the page's background
            for (const PageRecorder::Page &page : printer.pages) {
                const QRect ink = inkBox(page.image);
                if (ink.isNull())
                    continue; // the busy chart's document never began
                const QRgb back = page.image.pixel(ink.topLeft() + QPoint(2, 2));
                for (int q = 0; q < 3; ++q)
                    if (back == chart_style(ChartQuantity(q)).back)
                        printed << ChartQuantity(q);
                QCOMPARE(page.index, printed.size() - 1);
                QCOMPARE(page.setup.copies, 2);
                // 5 % of 550 x 425 is 27.5, 21.25; 90 % is 495 x 382.5.
                const QRect paper = orientation == QPageLayout::Portrait ? QRect(21, 27, 383, 496)
                                                                         : QRect(27, 21, 496, 383);
                QVERIFY((ink.topLeft() - paper.topLeft()).manhattanLength() <= 2);
                QVERIFY((ink.bottomRight() - paper.bottomRight()).manhattanLength() <= 2);
            }
            QTEST(printed, "expected");
        }
    }

    // "Print to File (PDF)" with water and pressure chosen: two files of one
    // page each, the first under the chosen name, each showing its chart a
    // little under 90 % of the paper (5 % in from the printable area). They
    // stay in the build folder to be looked at.
    void pdfFiles() {
        QDir out(QStringLiteral(NAKOS_BINARY_DIR "/tests/print/pdf"));
        QVERIFY(out.removeRecursively() && out.mkpath(QStringLiteral(".")));
        QPrinter qprinter(QPrinter::HighResolution);
        qprinter.setOutputFormat(QPrinter::PdfFormat);
        QtChartPrinter printer(qprinter);
        ScriptedDialog dialog;
        dialog.answer =
            PrintSetup{1, QPageLayout::Landscape, out.filePath(QStringLiteral("charts.pdf"))};
        DisplayFlags flags;
        flags.printTemperature = false;
        flags.printWater = flags.printPressure = true;
        PrintCommand(dialog, printer).file_print(*set, flags);

        const QStringList names{QStringLiteral("charts-pressure.pdf"),
                                QStringLiteral("charts.pdf")};
        QCOMPARE(out.entryList(QDir::Files), names);
        // pdftoppm (poppler-utils) writes one picture per page, NAME-1.png for
        // the first.
        for (const QString &name : names) {
            const QString pdf = out.filePath(name);
            QCOMPARE(QProcess::execute(QStringLiteral("pdftoppm"),
                                       {QStringLiteral("-png"), QStringLiteral("-r"),
                                        QStringLiteral("50"), pdf, pdf}),
                     0);
            const QImage page(pdf + QStringLiteral("-1.png"));
            const QRect ink = inkBox(page);
            QVERIFY(ink.width() > page.width() * 8 / 10 && ink.width() < page.width() * 9 / 10);
            const ChartQuantity q =
                name == names[1] ? ChartQuantity::Water : ChartQuantity::Pressure;
            QCOMPARE(QColor(page.pixel(ink.topLeft() + QPoint(2, 2))), QColor(chart_style(q).back));
        }
        QCOMPARE(out.entryList(QDir::Files).size(), 4); // one page each
    }

private:
    std::unique_ptr<SessionFixture> fixture;
    MeasurementStore *store = nullptr;
    std::unique_ptr<QMdiArea> area;
    std::unique_ptr<ChartSet> set;
};

QTEST_MAIN(TestPrint)
#include "tst_print.moc"
