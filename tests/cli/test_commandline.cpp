// The three programs' command lines as a shell sees them, without a display
// and without leaving files behind; the manual pages against --help.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

QString programPath(const QString &program) {
    const QString folder = program == QLatin1String("nakos-monitor") ? QStringLiteral("app")
                           : program == QLatin1String("nakos-tool")
                               ? QStringLiteral("tools/nakos-tool")
                               : QStringLiteral("tools/sensor-sim");
    return QStringLiteral(NAKOS_BINARY_DIR "/%1/%2").arg(folder, program);
}

struct Outcome {
    int status = -1; // -1: crashed or hung
    QString out, err;
    QStringList leftBehind; // what the run created in its home and working folder
};

Outcome run(const QString &program, const QStringList &args) {
    Outcome o;
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_CONFIG_HOME",
                             "NAKOS_SETTINGS_FILE"})
        env.remove(QString::fromLatin1(name));
    env.insert(QStringLiteral("HOME"), home.path());
    QProcess p;
    p.setProcessEnvironment(env);
    p.setWorkingDirectory(home.path());
    p.start(programPath(program), args);
    if (!p.waitForFinished(30000) || p.exitStatus() != QProcess::NormalExit)
        return o;
    o.status = p.exitCode();
    o.out = QString::fromLocal8Bit(p.readAllStandardOutput());
    o.err = QString::fromLocal8Bit(p.readAllStandardError());
    o.leftBehind =
        QDir(home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    return o;
}

QStringList words(const char *line) {
    return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestCommandLine : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void answers_data() {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out"); // how standard output starts; "" for nothing
        QTest::addColumn<QString>("err"); // all of standard error
        const auto ok = [](const char *name, const char *program, const char *line,
                           const QString &out) {
            QTest::newRow(name) << QString::fromLatin1(program) << words(line) << 0 << out
                                << QString();
        };
        // The error line, then the hint to the --help of `helpOf` if given.
        const auto bad = [](const char *name, const char *program, const char *line,
                            const char *error, const char *helpOf = nullptr) {
            QString err = QString::fromLatin1(error) + QLatin1Char('\n');
            if (helpOf)
                err += QStringLiteral("Try '%1 --help' for more information.\n")
                           .arg(QLatin1String(helpOf));
            QTest::newRow(name) << QString::fromLatin1(program) << words(line) << 2 << QString()
                                << err;
        };
        const QString version = QStringLiteral(" " NAKOS_PROJECT_VERSION "\n");
        const char *monitor = "nakos-monitor", *tool = "nakos-tool", *sim = "nakos-sensor-sim";
        ok("monitor help", monitor, "--help", QStringLiteral("Usage: nakos-monitor [OPTION]...\n"));
        ok("monitor version", monitor, "--version", QStringLiteral("nakos-monitor") + version);
        bad("monitor unknown option", monitor, "--demo --bogus",
            "nakos-monitor: unknown option '--bogus'", monitor);
        bad("monitor bad port", monitor, "--port 20 --start-query",
            "nakos-monitor: --port takes a port number from 1 to 19, not '20'");
        ok("tool help", tool, "-h", QStringLiteral("Usage: nakos-tool COMMAND"));
        ok("tool version", tool, "--version", QStringLiteral("nakos-tool") + version);
        ok("tool command help", tool, "convert --help",
           QStringLiteral("Usage: nakos-tool convert "));
        bad("tool without command", tool, "", "nakos-tool: missing command", tool);
        bad("tool unknown option", tool, "--bogus", "nakos-tool: unknown option '--bogus'", tool);
        bad("tool unknown command", tool, "frobnicate", "nakos-tool: unknown command 'frobnicate'",
            tool);
        bad("tool command's unknown option", tool, "info --bogus x",
            "nakos-tool: info: unknown option '--bogus'", "nakos-tool info");
        bad("tool bad value", tool, "record --port 1 --polls x out",
            "nakos-tool: record: --polls must be a positive whole number", "nakos-tool record");
        ok("sim help", sim, "--help", QStringLiteral("Usage: "));
        ok("sim version", sim, "-v", QStringLiteral("nakos-sensor-sim") + version);
        bad("sim unknown option", sim, "--bogus", "nakos-sensor-sim: Unknown option 'bogus'.", sim);
        bad("sim argument", sim, "extra", "nakos-sensor-sim: unexpected argument 'extra'", sim);
        bad("sim bad number", sim, "--interval soon",
            "nakos-sensor-sim: --interval takes a whole number of 0 or more, not 'soon'");
    }

    void answers() {
        QFETCH(QString, program);
        QFETCH(QStringList, args);
        QFETCH(QString, out);
        const Outcome o = run(program, args);
        QTEST(o.status, "status");
        QVERIFY2(out.isEmpty() ? o.out.isEmpty() : o.out.startsWith(out), qPrintable(o.out));
        QTEST(o.err, "err");
        QCOMPARE(o.leftBehind, QStringList());
    }

    void manPageNamesEveryOption_data() {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("helpArgs"); // the commands whose usage to read; "" for none
        // The tool's options belong to its commands.
        const auto row = [](const char *program, const char *commands = "") {
            QTest::newRow(program)
                << QString::fromLatin1(program) << QStringList{QString()} + words(commands);
        };
        row("nakos-monitor");
        row("nakos-tool", "convert info plot record");
        row("nakos-sensor-sim");
    }

    void manPageNamesEveryOption() {
        QFETCH(QString, program);
        QFETCH(QStringList, helpArgs);
        QFile page(QStringLiteral(NAKOS_MAN_DIR "/%1.1").arg(program));
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QString roff = QString::fromUtf8(page.readAll());
        QVERIFY2(
            roff.contains(
                QStringLiteral("\"%1 %2\"").arg(program, QStringLiteral(NAKOS_PROJECT_VERSION))),
            "the .TH line names another version");
        static const QRegularExpression option(QStringLiteral("--[a-z][a-z-]*"));
        for (const QString &command : std::as_const(helpArgs)) {
            QStringList args{QStringLiteral("--help")};
            if (!command.isEmpty())
                args.prepend(command);
            const Outcome o = run(program, args);
            QCOMPARE(o.status, 0);
            for (const QRegularExpressionMatch &m : option.globalMatch(o.out)) {
                QString name = m.captured();
                QVERIFY2(roff.contains(name.replace(QLatin1Char('-'), QLatin1String("\\-"))),
                         qPrintable(program + QLatin1Char(' ') + m.captured()));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "test_commandline.moc"
