// The longest stretch the user-interface thread spends away from its event
// loop while a poll brings a "list" reply of 1000 readings into a store of
// 129000 points, the four chart windows redraw, and the autosave writes the
// full store. The reply comes from the simulated sensor over a real
// pseudo-terminal (the simulator runs in a thread of its own, as a sensor
// is a device of its own), so the link's whole path runs: the exchange,
// the silence timer, the reply reader with the duplicate index, the
// rebuild over real chart windows and the autosave the change sets off (its
// minute is run by hand right after the poll).
//
// A zero-interval timer on the user-interface thread stamps every pass of
// the event loop, nested ones included (the drawings let pending events run
// every 1000 points, as a file routine does every 50 ms): the gaps between
// its stamps are the stretches the window could not react. Each gap is
// named by what happened inside it and timed by the clock and by the
// thread's CPU time (on a busy machine the clock also counts the time other
// programs had the processor). Prints the longest gap of each run (median
// and worst) and the stretches of the worst run. Run it from a
// Release or RelWithDebInfo build; BENCH_RUNS sets the number of runs (10).
#include "chart/ui/chartset.h"
#include "common/benchapp.h"
#include "common/benchstore.h"
#include "core/store.h"
#include "sensorsim.h"
#include "support/sessionfixture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QMdiArea>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace {

constexpr double kGoalMs = 16.0;
constexpr int kHeld = MeasurementStore::capacity - 1000;
constexpr int kReplyLines = 1000;
constexpr int kAreaWidth = 1900;
constexpr int kAreaHeight = 980;

QElapsedTimer clockNs;

double nowMs() {
    return double(clockNs.nsecsElapsed()) / 1e6;
}

// CPU time of this thread: what it worked, not what the machine let it.
double threadCpuMs() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6;
}

struct Mark {
    double at;
    const char *what;
};

struct Gap {
    double from, to;
    double cpu;       // CPU time of the thread within it
    std::string what; // the marks inside it
    double length() const { return to - from; }
};

// Stamps the passes of the event loop and collects the marks set between
// them.
class PassRecorder : public QObject {
public:
    PassRecorder() {
        m_timer.setInterval(0);
        connect(&m_timer, &QTimer::timeout, this, [this] { pass(); });
    }
    void start() {
        m_gaps.clear();
        m_marks.clear();
        m_last = nowMs();
        m_lastCpu = threadCpuMs();
        m_timer.start();
    }
    void stop() {
        pass();
        m_timer.stop();
    }
    void mark(const char *what) { m_marks.push_back({nowMs(), what}); }
    const std::vector<Gap> &gaps() const { return m_gaps; }

private:
    void pass() {
        const double t = nowMs();
        const double cpu = threadCpuMs();
        Gap g{m_last, t, cpu - m_lastCpu, {}};
        for (const Mark &m : m_marks) {
            if (m.at >= m_last && m.at <= t) {
                char offset[32];
                std::snprintf(offset, sizeof offset, " (+%.1f)", m.at - m_last);
                if (!g.what.empty())
                    g.what += ", ";
                g.what += m.what;
                g.what += offset;
            }
        }
        m_gaps.push_back(std::move(g));
        m_last = t;
        m_lastCpu = threadCpuMs();
    }

    QTimer m_timer;
    double m_last = 0;
    double m_lastCpu = 0;
    std::vector<Gap> m_gaps;
    std::vector<Mark> m_marks;
};

} // namespace

int main(int argc, char **argv) {
    benchUseOffscreen();
    QApplication app(argc, argv);
    const int runs = benchRuns(10);
    clockNs.start();

    // The sensor, in a thread of its own, with 1000 readings logged.
    QThread simThread;
    simThread.start();
    QObject simContext;
    simContext.moveToThread(&simThread);
    SensorSimulator *sim = nullptr;
    QString device;
    QMetaObject::invokeMethod(
        &simContext,
        [&] {
            SimOptions options;
            options.readingIntervalMs = 0;
            options.logSize = kReplyLines;
            options.prefill = kReplyLines;
            sim = new SensorSimulator(options);
            if (!sim->open())
                device = sim->portPath();
        },
        Qt::BlockingQueuedConnection);
    if (device.isEmpty()) {
        std::fprintf(stderr, "cannot open a pseudo-terminal\n");
        return 1;
    }

    SessionFixture f;
    f.start();
    MonitorSession &session = f.session;
    session.port_selectDevice(device);
    session.autoSave().autoSave_stop(); // its minute is run by hand

    PassRecorder recorder;
    QObject::connect(&session, &MonitorSession::readingsAppended,
                     [&] { recorder.mark("list parsed and appended"); });
    // Connected before the chart set's slot, so it runs first.
    QObject::connect(&session, &MonitorSession::displayRequested,
                     [&] { recorder.mark("rebuild starts"); });

    QMdiArea area;
    area.resize(kAreaWidth, kAreaHeight);
    area.show();
    ChartSet set(session, &area);
    set.createCharts(QRect());
    QApplication::processEvents();

    QObject::connect(&session, &MonitorSession::displayRequested,
                     [&] { recorder.mark("rebuild ends"); });

    QEventLoop loop;
    bool autoSaved = false;
    // The poll's end: the autosave's minute on the next pass.
    QObject::connect(&session, &MonitorSession::pollFinished, [&] {
        recorder.mark("poll finished");
        QTimer::singleShot(0, [&] {
            recorder.mark("autosave starts");
            for (int i = 0; i < AutoSave::ticksPerSave; ++i)
                session.autoSave().tick();
            recorder.mark("autosave returns");
        });
    });
    // The file is written (in the background, if the session writes it so).
    QObject::connect(&session, &MonitorSession::autoSaveFinished, [&](bool failed) {
        recorder.mark("autosave written");
        autoSaved = !failed;
        loop.quit();
    });

    // Per run: the longest stretch by the clock, and the longest by CPU
    // time, which is what the thread had to do.
    std::vector<double> longestWall, longestCpu;
    std::vector<Gap> worstRun;
    double worst = -1;
    const QString autoSaveFile = session.autoSave().fileName();
    int added = 0;
    for (int run = 0; run <= runs; ++run) { // run 0 warms up
        fillBenchStore(f.store(), kHeld, 5);
        f.store().data_changed = false;
        QFile::remove(autoSaveFile);
        autoSaved = false;

        recorder.start();
        session.query_start();
        session.query_stop(); // the poll under way completes
        loop.exec();
        recorder.stop();

        added = f.store().dataPoint_count - kHeld;
        if (!autoSaved || added != kReplyLines || !QFileInfo::exists(autoSaveFile)) {
            std::fprintf(stderr, "run %d: %d readings added, autosave %s\n", run, added,
                         QFileInfo::exists(autoSaveFile) ? "written" : "missing");
            return 1;
        }
        if (run == 0)
            continue;
        const auto &gaps = recorder.gaps();
        double wall = 0, cpu = 0;
        for (const Gap &g : gaps) {
            wall = std::max(wall, g.length());
            cpu = std::max(cpu, g.cpu);
        }
        longestWall.push_back(wall);
        longestCpu.push_back(cpu);
        if (cpu > worst) {
            worst = cpu;
            worstRun = gaps;
        }
    }

    const auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    std::printf("poll of %d readings into %d held, 4 charts redrawn, autosave of %d points "
                "(%lld bytes); %d runs (goal: %.0f ms)\n",
                kReplyLines, kHeld, int(f.store().dataPoint_count), QFileInfo(autoSaveFile).size(),
                runs, kGoalMs);
    std::printf("longest stretch without the event loop, by the clock: median %6.2f ms, worst "
                "%6.2f ms\n",
                median(longestWall), *std::max_element(longestWall.begin(), longestWall.end()));
    std::printf("                                     by CPU time: median %6.2f ms, worst %6.2f "
                "ms\n",
                median(longestCpu), worst);
    // Stretches without work are the waits for the reply, where the thread
    // has nothing to do: long ones there mean the machine was busy.
    std::printf("the run with the longest CPU stretch: stretches with a mark or over 1 ms of "
                "CPU\n  (ms from the run's start; marks at +ms into the stretch)\n");
    const double t0 = worstRun.empty() ? 0 : worstRun.front().from;
    int idle = 0;
    double idleLongest = 0;
    for (const Gap &g : worstRun) {
        if (g.what.empty() && g.cpu <= 1.0) {
            idle += g.length() > 2.0;
            idleLongest = std::max(idleLongest, g.length());
        } else {
            std::printf("  at %7.1f: %6.2f ms (CPU %6.2f)  %s\n", g.from - t0, g.length(), g.cpu,
                        g.what.empty() ? "-" : g.what.c_str());
        }
    }
    std::printf("  and %d idle ones over 2 ms (longest %.2f ms): a busy machine\n", idle,
                idleLongest);

    QMetaObject::invokeMethod(
        &simContext, [&] { delete sim; }, Qt::BlockingQueuedConnection);
    simThread.quit();
    simThread.wait();
    return 0;
}
