// Throughput of the native writer, the native reader and the CSV export on
// a full store of 130000 points. Prints MB/s per routine (best of several
// runs, so a cold page cache does not count); run it from a Release build.
#include "files/csvexport.h"
#include "files/datafile.h"

#include "common/benchstore.h"
#include "core/store.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>
#include <random>

namespace {

struct Rate {
    double wall = 0.0; // MB per second of elapsed time
    double cpu = 0.0;  // MB per second of this thread's CPU time (fair on a busy machine)
};

double threadCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + double(ts.tv_nsec) / 1e9;
}

template <typename Run> Rate bestRate(const QString &file, int runs, Run run) {
    Rate best;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer t;
        t.start();
        const double cpuStart = threadCpuSeconds();
        if (run()) {
            std::fprintf(stderr, "bench_files: a run failed\n");
            return {};
        }
        const double cpu = threadCpuSeconds() - cpuStart;
        const double wall = double(t.nsecsElapsed()) / 1e9;
        const double mb = double(QFileInfo(file).size()) / 1e6;
        best.wall = std::max(best.wall, mb / wall);
        best.cpu = std::max(best.cpu, mb / cpu);
    }
    return best;
}

void print(const char *what, Rate r) {
    std::printf("%-26s %7.0f MB/s wall, %7.0f MB/s CPU\n", what, r.wall, r.cpu);
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    if (!dir.isValid())
        return 1;
    MeasurementStore store;
    DataFile dataFile(store);
    CsvExport csv(store);
    fillBenchStore(store, MeasurementStore::capacity, 42);

    const QString native = dir.filePath(QStringLiteral("bench.txt"));
    const QString csvName = dir.filePath(QStringLiteral("bench.csv"));
    const int runs = qEnvironmentVariableIntValue("BENCH_RUNS") > 0
                         ? qEnvironmentVariableIntValue("BENCH_RUNS")
                         : 9;
    const Rate save =
        bestRate(native, runs, [&] { return dataFile.dataFile_save(native, false).failed(); });
    const Rate load = bestRate(native, runs, [&] {
        return dataFile.dataFile_load(native, MergeMode::Replace, false).failed() ||
               store.dataPoint_count != MeasurementStore::capacity;
    });
    const Rate exportRate =
        bestRate(csvName, runs, [&] { return csv.csvFile_export(csvName, false).failed(); });

    std::printf("store: %d points, native file %.1f MB, CSV file %.1f MB\n", store.dataPoint_count,
                double(QFileInfo(native).size()) / 1e6, double(QFileInfo(csvName).size()) / 1e6);
    print("save   (dataFile_save):", save);
    print("load   (dataFile_load):", load);
    print("export (csvFile_export):", exportRate);
    return 0;
}
