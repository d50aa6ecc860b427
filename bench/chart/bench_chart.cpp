// Time of one display refresh: filling the four charts from the store
// (bucket averaging to about 5000 values each) and drawing all four, for a
// full store of 130000 points and for 5200. Measured twice: on the chart
// models alone (fill + one drawing each into an image of a chart window's
// size) and through the chart windows (display_data as the program runs it,
// with the drawings of the clear and title steps). Values are random, the
// worst case for the curve (every segment spans much of the plot). Prints
// the median and the best of several runs, wall and CPU time; run it from a
// Release build under QT_QPA_PLATFORM=offscreen.
#include "chart/chartrender.h"
#include "chart/displayfill.h"
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "common/benchapp.h"
#include "common/benchstore.h"
#include "core/store.h"
#include "support/sessionfixture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMdiArea>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

namespace {

// The picture area of a chart window taking a quarter of a full-HD frame.
constexpr int kCanvasWidth = 930;
constexpr int kCanvasHeight = 460;

double threadCpuMs() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6;
}

struct Times {
    double wallMedian, wallBest, cpuMedian, cpuBest;
};

template <typename Run> Times measure(int runs, Run run) {
    std::vector<double> wall, cpu;
    run(); // warm-up: fonts, glyph caches, first allocation of the images
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer t;
        t.start();
        const double c0 = threadCpuMs();
        run();
        cpu.push_back(threadCpuMs() - c0);
        wall.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::sort(wall.begin(), wall.end());
    std::sort(cpu.begin(), cpu.end());
    return {wall[wall.size() / 2], wall.front(), cpu[cpu.size() / 2], cpu.front()};
}

void print(const char *what, int32_t points, Times t) {
    std::printf("%-34s %6d points: median %6.2f ms wall, %6.2f ms CPU; best %6.2f / %6.2f ms\n",
                what, points, t.wallMedian, t.cpuMedian, t.wallBest, t.cpuBest);
}

Times benchModels(MeasurementStore &store, int runs) {
    std::array<ChartModel, chart_quantityCount> charts;
    DisplayCharts models;
    std::array<QImage, chart_quantityCount> images;
    for (int i = 0; i < chart_quantityCount; ++i) {
        chart_applyStyle(charts[size_t(i)], ChartQuantity(i), false);
        charts[size_t(i)].setCanvasSize(kCanvasWidth, kCanvasHeight);
        models[size_t(i)] = &charts[size_t(i)];
        images[size_t(i)] = QImage(kCanvasWidth, kCanvasHeight, QImage::Format_RGB32);
    }
    return measure(runs, [&] {
        display_refreshModels(store, models);
        for (int i = 0; i < chart_quantityCount; ++i) {
            QPainter p(&images[size_t(i)]);
            chart_draw(charts[size_t(i)], p, ChartSurface::Screen);
        }
    });
}

Times benchFillOnly(MeasurementStore &store, int runs) {
    std::array<ChartModel, chart_quantityCount> charts;
    DisplayCharts models;
    for (int i = 0; i < chart_quantityCount; ++i)
        models[size_t(i)] = &charts[size_t(i)];
    return measure(runs, [&] { display_refreshModels(store, models); });
}

Times benchWindows(ChartSet &set, int runs) {
    return measure(runs, [&] { set.display_data(); });
}

} // namespace

int main(int argc, char **argv) {
    benchUseOffscreen();
    QApplication app(argc, argv);
    const int runs = benchRuns(21);
    SessionFixture fixture;
    MeasurementStore *store = &fixture.store();

    QMdiArea area;
    area.resize(2 * kCanvasWidth + 40, 2 * kCanvasHeight + 60);
    area.show();
    ChartSet set(fixture.session, &area);
    set.createCharts(QRect());
    QApplication::processEvents();

    std::printf("chart picture %d x %d, %d runs each (goal: 16 ms for 130000 points)\n",
                kCanvasWidth, kCanvasHeight, runs);
    for (int32_t count : {MeasurementStore::capacity, 5200}) {
        fillBenchStore(*store, count, 7);
        print("fill 4 chart models:", count, benchFillOnly(*store, runs));
        print("fill + draw 4 chart models:", count, benchModels(*store, runs));
        print("display_data on 4 chart windows:", count, benchWindows(set, runs));
    }
    std::printf("water chart in the windows: %d plotted values\n",
                int(set.chart(ChartQuantity::Water)->model().point_count));
    return 0;
}
