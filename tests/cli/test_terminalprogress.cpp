// nakos-tool's progress line as a terminal would show it.
#include "terminalprogress.h"

#include <QTest>

#include <cstdio>

namespace {

// The line a terminal shows after these bytes: a carriage return goes back
// to the start, other characters overwrite what is under them.
QByteArray screen(const QByteArray &bytes) {
    QByteArray line;
    qsizetype column = 0;
    for (char c : bytes) {
        if (c == '\r') {
            column = 0;
            continue;
        }
        if (column < line.size())
            line[column] = c;
        else
            line.append(c);
        ++column;
    }
    while (line.endsWith(' '))
        line.chop(1);
    return line;
}

} // namespace

class TestTerminalProgress : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void line_data() {
        QTest::addColumn<qint64>("delayMs");
        QTest::addColumn<QStringList>("steps"); // "begin <caption>", "set <percent>" or "end"
        QTest::addColumn<QByteArray>("shown");
        const auto row = [](const char *name, qint64 delayMs, const char *steps,
                            const QByteArray &shown) {
            QTest::newRow(name) << delayMs << QString::fromLatin1(steps).split(u'|') << shown;
        };
        row("running", 0, "begin Loading file...|set 42", "nakos-tool: Loading file...  42%");
        row("wiped at the end", 0, "begin Loading file...|set 42|end", "");
        row("a short run prints nothing", 60000, "begin Loading file...|set 42", "");
        row("a shorter caption leaves no tail", 0,
            "begin Loading a long file name...|set 100|end|begin Saving|set 7",
            "nakos-tool: Saving   7%");
    }

    void line() {
        QFETCH(qint64, delayMs);
        QFETCH(QStringList, steps);
        std::FILE *out = std::tmpfile();
        QVERIFY(out);
        const auto written = [out] {
            std::fflush(out);
            QByteArray bytes(std::ftell(out), '\0');
            std::rewind(out);
            bytes.truncate(qsizetype(std::fread(bytes.data(), 1, size_t(bytes.size()), out)));
            std::fseek(out, 0, SEEK_END); // the stream may be written again after a read
            return bytes;
        };
        {
            TerminalProgress progress(out, delayMs);
            for (const QString &step : std::as_const(steps)) {
                const QString arg = step.section(QLatin1Char(' '), 1);
                if (step.startsWith(QLatin1String("begin")))
                    progress.progress_begin(arg);
                else if (step.startsWith(QLatin1String("set")))
                    progress.progress_setValue(arg.toInt());
                else
                    progress.progress_end();
            }
            const QByteArray bytes = written();
            QVERIFY2(!bytes.contains('\n'), bytes.constData()); // one line, redrawn in place
            QTEST(screen(bytes), "shown");
        }
        // The end of the conversion clears the line, also without progress_end.
        QCOMPARE(screen(written()), QByteArray());
        std::fclose(out);
    }
};

QTEST_GUILESS_MAIN(TestTerminalProgress)
#include "test_terminalprogress.moc"
