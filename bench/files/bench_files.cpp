// Throughput of the native writer, the native reader and the CSV export on
// a full store of 130000 points, and of the sensor log import on an "A" log
// of 130000 lines. Prints MB/s per routine (best of several runs, so a cold
// page cache does not count), and the time to list a folder of 2500 daily
// logs with their descriptions; run it from a Release build.
#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/logfolder.h"
#include "files/logimport.h"

#include "simlogs.h"

#include "common/benchstore.h"
#include "core/store.h"

#include <QCoreApplication>
#include <QDir>
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
    std::printf("%-34s %7.0f MB/s wall, %7.0f MB/s CPU\n", what, r.wall, r.cpu);
}

// An "A" log of `lines` readings 4 s apart, as the sensor writes it.
bool writeALog(const QString &name, int lines) {
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    ReadingGenerator generator(7);
    const QDateTime start(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC);
    QByteArray text;
    for (int i = 0; i < lines; ++i)
        text +=
            simLogLine(generator.next(start.addSecs(4 * i)), SimLogFormat::A, 1, false) + "\r\n";
    return file.write(text) == text.size();
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

    const int32_t points = store.dataPoint_count;
    const QString log = dir.filePath(QStringLiteral("bench.log"));
    if (!writeALog(log, MeasurementStore::capacity))
        return 1;
    const int64_t logSize = QFileInfo(log).size();
    LogImport import(store);
    // Limit 0: every line parsed; 130000 as the Import command passes it,
    // which thins this file to every second line.
    const Rate importAll = bestRate(log, runs, [&] {
        return import.logFile_import(log, MergeMode::Replace, false, logSize, 0).failed() ||
               store.dataPoint_count != MeasurementStore::capacity;
    });
    const Rate importThinned = bestRate(log, runs, [&] {
        return import
                   .logFile_import(log, MergeMode::Replace, false, logSize,
                                   MeasurementStore::capacity)
                   .failed() ||
               store.dataPoint_count != MeasurementStore::capacity / 2;
    });

    // 2500 daily logs of a little over 16384 bytes, so each is read at its
    // beginning and its end.
    const QString folder = dir.filePath(QStringLiteral("logs"));
    QDir().mkpath(folder);
    SimLogOptions logs;
    logs.folder = folder;
    logs.start = QDate(2020, 1, 1);
    logs.days = 2500;
    logs.intervalSeconds = 330;
    QString error;
    if (writeSimLogs(logs, &error).size() != logs.days) {
        std::fprintf(stderr, "bench_files: %s\n", qPrintable(error));
        return 1;
    }
    double listBest = 1e9;
    int listed = 0;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer t;
        t.start();
        listed = int(logfolder::list(folder + QLatin1Char('/')).size());
        listBest = std::min(listBest, double(t.nsecsElapsed()) / 1e6);
    }

    std::printf("store: %d points, native file %.1f MB, CSV file %.1f MB\n", points,
                double(QFileInfo(native).size()) / 1e6, double(QFileInfo(csvName).size()) / 1e6);
    print("save   (dataFile_save):", save);
    print("load   (dataFile_load):", load);
    print("export (csvFile_export):", exportRate);
    std::printf("A log: %d lines, %.1f MB\n", MeasurementStore::capacity, double(logSize) / 1e6);
    print("import (logFile_import, limit 0):", importAll);
    print("import (limit 130000, step 2):", importThinned);
    std::printf("list a folder of %d logs (logfolder::list): %.0f ms\n", listed, listBest);
    return 0;
}
