// Time of File > Open of a full native data file (130000 readings) through
// the session, with the four chart windows of the main window over a
// QMdiArea, until every chart is drawn: the file dialog and the "Data
// handling" choice are scripted (the file, "Replace"), and the measurement
// takes in everything the command sets off: the read, the immediate
// rebuild, the pending events and the zoom reset's drawings, then the
// change monitor's rebuild (run by hand with monitorTick() instead of
// waiting for its 500 ms tick) and the window repaint. Prints the median and
// the worst of the runs with a breakdown (read, rebuilds, zoom reset) and,
// for reference, the chart fill alone. Run it from a Release or
// RelWithDebInfo build; it sets QT_QPA_PLATFORM=offscreen unless told
// otherwise. BENCH_RUNS sets the number of runs (20).
#include "chart/displayfill.h"
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "common/benchapp.h"
#include "common/benchstore.h"
#include "core/store.h"
#include "files/datafile.h"
#include "support/sessionfixture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMdiArea>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace {

constexpr double kGoalMs = 50.0;

// A quarter of a full-HD frame for each chart window.
constexpr int kAreaWidth = 1900;
constexpr int kAreaHeight = 980;

QElapsedTimer clockNs;

// A moment as wall time and as CPU time of this thread (a busy machine
// stretches the first, not the second).
struct Stamp {
    double wall = 0;
    double cpu = 0;
};

Stamp now() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return {double(clockNs.nsecsElapsed()) / 1e6,
            double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6};
}

// Stamps of one Open, in the order the command reaches them.
struct Stamps {
    Stamp start;
    Stamp readDone;     // the oil name is shown right after the read
    Stamp rebuildStart; // the loader's rebuild
    Stamp rebuildEnd;
    Stamp zoomStart; // after the command let pending events run
    Stamp zoomEnd;
    Stamp monitorStart; // the change monitor's rebuild
    Stamp monitorEnd;
    Stamp painted; // the windows show the new pictures
    int rebuilds = 0;
};

struct Row {
    const char *what;
    std::vector<double> wall, cpu;
    void add(Stamp from, Stamp to) {
        wall.push_back(to.wall - from.wall);
        cpu.push_back(to.cpu - from.cpu);
    }
};

void printRow(const Row &row) {
    std::vector<double> w = row.wall, c = row.cpu;
    std::sort(w.begin(), w.end());
    std::sort(c.begin(), c.end());
    std::printf("  %-38s %8.2f %8.2f %8.2f %8.2f\n", row.what, w[w.size() / 2], w.back(),
                c[c.size() / 2], c.back());
}

} // namespace

int main(int argc, char **argv) {
    benchUseOffscreen();
    QApplication app(argc, argv);
    const int runs = benchRuns(20);
    clockNs.start();

    SessionFixture f;
    f.start();
    MonitorSession &session = f.session;
    // Its rebuild is run by hand below; left running, its tick would now and
    // then land inside a drawing's pending events and nest a rebuild there.
    session.Timer_monitorChanges.stop();

    // The file: a full store written by the program's own writer.
    const QString file = f.dir.filePath(QStringLiteral("full.txt"));
    {
        MeasurementStore source;
        fillBenchStore(source, MeasurementStore::capacity, 11);
        DataFile writer(source);
        if (writer.dataFile_save(file, false).failed()) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return 1;
        }
    }

    Stamps s;
    // Connected before the chart set's own slots, so they run first.
    QObject::connect(&session, &MonitorSession::displayRequested,
                     [&] { (s.rebuilds == 0 ? s.rebuildStart : s.monitorStart) = now(); });
    QObject::connect(&session, &MonitorSession::zoomResetRequested, [&] { s.zoomStart = now(); });
    QObject::connect(&session, &MonitorSession::oilNameShown, [&] { s.readDone = now(); });

    QMdiArea area;
    area.resize(kAreaWidth, kAreaHeight);
    area.show();
    ChartSet set(session, &area);
    set.createCharts(QRect());
    QApplication::processEvents();

    // ... and after them.
    QObject::connect(&session, &MonitorSession::displayRequested, [&] {
        (s.rebuilds == 0 ? s.rebuildEnd : s.monitorEnd) = now();
        ++s.rebuilds;
    });
    QObject::connect(&session, &MonitorSession::zoomResetRequested, [&] { s.zoomEnd = now(); });

    Row total{"Open, until the charts are drawn", {}, {}};
    Row read{"  read (load and merge)", {}, {}};
    Row rebuild{"  loader's rebuild (clear, fill, draw)", {}, {}};
    Row events{"  pending events after it", {}, {}};
    Row zoom{"  zoom reset (4 drawings)", {}, {}};
    Row monitor{"  change monitor's rebuild", {}, {}};
    Row repaint{"  window repaint", {}, {}};
    Row fill{"  (the fill of one rebuild alone)", {}, {}};
    const std::array<Row *, 8> rows{&total, &read,    &rebuild, &events,
                                    &zoom,  &monitor, &repaint, &fill};

    // The fill alone, on models of its own, for the split of a rebuild.
    DisplayCharts models;
    std::array<ChartModel, chart_quantityCount> copies;
    for (int i = 0; i < chart_quantityCount; ++i)
        models[size_t(i)] = &copies[size_t(i)];

    const auto openOnce = [&] {
        f.store().data_changed = false; // no save prompt
        f.dialogs.fileAnswers << file;
        f.dialogs.modeAnswers << int16_t(MergeMode::Replace);
        s = Stamps();
        s.start = now();
        session.file_open();
        session.monitorTick();
        QApplication::processEvents();
        s.painted = now();
        if (s.rebuilds != 2 || f.store().dataPoint_count != MeasurementStore::capacity) {
            std::fprintf(stderr, "unexpected run: %d rebuilds, %d points\n", s.rebuilds,
                         int(f.store().dataPoint_count));
            std::exit(1);
        }
        total.add(s.start, s.painted);
        read.add(s.start, s.readDone);
        rebuild.add(s.rebuildStart, s.rebuildEnd);
        events.add(s.rebuildEnd, s.zoomStart);
        zoom.add(s.zoomStart, s.zoomEnd);
        monitor.add(s.monitorStart, s.monitorEnd);
        repaint.add(s.monitorEnd, s.painted);
        const Stamp fill0 = now();
        display_refreshModels(f.store(), models);
        fill.add(fill0, now());
    };

    openOnce(); // warm-up: the loader's buffer, fonts, glyph caches
    for (Row *row : rows)
        row->wall.clear(), row->cpu.clear();
    for (int i = 0; i < runs; ++i)
        openOnce();

    std::printf("File > Open of %d readings (%s, %lld bytes), 4 charts in a %d x %d area, %d "
                "runs (goal: %.0f ms)\n",
                int(MeasurementStore::capacity), "Replace", QFileInfo(file).size(), kAreaWidth,
                kAreaHeight, runs, kGoalMs);
    std::printf("  %-38s %8s %8s %8s %8s\n", "milliseconds", "median", "worst", "CPU med",
                "CPU wrst");
    for (const Row *row : rows)
        printRow(*row);
    std::printf("water chart: %d plotted values\n",
                int(set.chart(ChartQuantity::Water)->model().point_count));
    return 0;
}
