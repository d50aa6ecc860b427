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
        // "begin <caption>", "set <percent>" or "end", in order.
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QByteArray>("shown");
        const QStringList loading{QStringLiteral("begin Loading file..."),
                                  QStringLiteral("set 42")};
        QTest::newRow("running") << qint64(0) << loading
                                 << QByteArray("nakos-tool: Loading file...  42%");
        QTest::newRow("wiped at the end")
            << qint64(0) << loading + QStringList{QStringLiteral("end")} << QByteArray();
        QTest::newRow("a short run prints nothing") << qint64(60000) << loading << QByteArray();
        QTest::newRow("a shorter caption leaves no tail")
            << qint64(0)
            << QStringList{QStringLiteral("begin Loading a long file name..."),
                           QStringLiteral("set 100"), QStringLiteral("end"),
                           QStringLiteral("begin Saving"), QStringLiteral("set 7")}
            << QByteArray("nakos-tool: Saving   7%");
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
