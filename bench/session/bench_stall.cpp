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
// named by what happened inside it. Prints the longest gap of each run
// (median and worst) and the worst run's stretches over 2 ms. Run it from a
// Release or RelWithDebInfo build; BENCH_RUNS sets the number of runs (10).
#include "chart/ui/chartset.h"
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

struct Mark {
    double at;
    const char *what;
};

struct Gap {
    double from, to;
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
        Gap g{m_last, t, {}};
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
    }

    QTimer m_timer;
    double m_last = 0;
    std::vector<Gap> m_gaps;
    std::vector<Mark> m_marks;
};

} // namespace

int main(int argc, char **argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int runs = qEnvironmentVariableIntValue("BENCH_RUNS") > 0
                         ? qEnvironmentVariableIntValue("BENCH_RUNS")
                         : 10;
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
            autoSaved = true;
            loop.quit();
        });
    });

    std::vector<double> longest;
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
        const auto it = std::max_element(gaps.begin(), gaps.end(), [](const Gap &a, const Gap &b) {
            return a.length() < b.length();
        });
        longest.push_back(it->length());
        if (it->length() > worst) {
            worst = it->length();
            worstRun = gaps;
        }
    }

    std::sort(longest.begin(), longest.end());
    std::printf("poll of %d readings into %d held, 4 charts redrawn, autosave of %d points "
                "(%lld bytes); %d runs (goal: %.0f ms)\n",
                kReplyLines, kHeld, int(f.store().dataPoint_count), QFileInfo(autoSaveFile).size(),
                runs, kGoalMs);
    std::printf("longest stretch without the event loop: median %.2f ms, worst %.2f ms\n",
                longest[longest.size() / 2], longest.back());
    // Stretches without a mark are the waits for the reply, where the
    // thread has nothing to do: long ones there mean the machine was busy.
    std::printf("the worst run's stretches over 2 ms, in order (ms from its start; marks at "
                "+ms into the stretch):\n");
    const double t0 = worstRun.empty() ? 0 : worstRun.front().from;
    int idle = 0;
    double idleLongest = 0;
    for (const Gap &g : worstRun) {
        if (g.what.empty()) {
            idle += g.length() > 2.0;
            idleLongest = std::max(idleLongest, g.length());
        } else if (g.length() > 2.0) {
            std::printf("  at %7.1f: %6.2f ms  %s\n", g.from - t0, g.length(), g.what.c_str());
        }
    }
    std::printf("  and %d while waiting for the reply (longest %.2f ms)\n", idle, idleLongest);

    QMetaObject::invokeMethod(
        &simContext, [&] { delete sim; }, Qt::BlockingQueuedConnection);
    simThread.quit();
    simThread.wait();
    return 0;
}
