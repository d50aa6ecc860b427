// The three programs' command lines as a shell sees them: --help and
// --version on standard output with status 0, a bad command line on
// standard error with status 2; all without a display, and without leaving
// settings or folders behind. The manual pages name every option --help
// lists.
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

} // namespace

class TestCommandLine : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void answers_data();
    void answers();
    void manPageNamesEveryOption_data();
    void manPageNamesEveryOption();
};

void TestCommandLine::answers_data() {
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");  // how standard output starts; "" for nothing
    QTest::addColumn<QString>("err");  // its first line on standard error; "" for nothing
    QTest::addColumn<QString>("hint"); // its second line, or "" for none

    const QString version = QStringLiteral(NAKOS_PROJECT_VERSION "\n");
    const QString monitor = QStringLiteral("nakos-monitor"), tool = QStringLiteral("nakos-tool"),
                  sim = QStringLiteral("nakos-sensor-sim"), none;
    const auto tryHelp = [](const char *command) {
        return QStringLiteral("Try '%1 --help' for more information.").arg(QLatin1String(command));
    };
    const auto args = [](const char *line) {
        return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    // clang-format off
    QTest::newRow("monitor help") << monitor << args("--help") << 0
        << QStringLiteral("Usage: nakos-monitor [OPTION]...\n") << none << none;
    QTest::newRow("monitor version") << monitor << args("--version") << 0
        << QStringLiteral("nakos-monitor ") + version << none << none;
    QTest::newRow("monitor unknown option") << monitor << args("--demo --bogus") << 2
        << none << QStringLiteral("nakos-monitor: unknown option '--bogus'") << tryHelp("nakos-monitor");
    QTest::newRow("monitor bad port") << monitor << args("--port 20 --start-query") << 2
        << none << QStringLiteral("nakos-monitor: --port takes a port number from 1 to 19, not '20'")
        << none;

    QTest::newRow("tool help") << tool << args("-h") << 0
        << QStringLiteral("Usage: nakos-tool COMMAND") << none << none;
    QTest::newRow("tool version") << tool << args("--version") << 0
        << QStringLiteral("nakos-tool ") + version << none << none;
    QTest::newRow("tool command help") << tool << args("convert --help") << 0
        << QStringLiteral("Usage: nakos-tool convert ") << none << none;
    QTest::newRow("tool without command") << tool << args("") << 2
        << none << QStringLiteral("nakos-tool: missing command") << tryHelp("nakos-tool");
    QTest::newRow("tool unknown option") << tool << args("--bogus") << 2
        << none << QStringLiteral("nakos-tool: unknown option '--bogus'") << tryHelp("nakos-tool");
    QTest::newRow("tool unknown command") << tool << args("frobnicate") << 2
        << none << QStringLiteral("nakos-tool: unknown command 'frobnicate'") << tryHelp("nakos-tool");
    QTest::newRow("tool command's unknown option") << tool << args("info --bogus x") << 2
        << none << QStringLiteral("nakos-tool: info: unknown option '--bogus'") << tryHelp("nakos-tool info");
    QTest::newRow("tool bad value") << tool << args("record --port 1 --polls x out") << 2
        << none << QStringLiteral("nakos-tool: record: --polls must be a positive whole number")
        << tryHelp("nakos-tool record");

    QTest::newRow("sim help") << sim << args("--help") << 0
        << QStringLiteral("Usage: ") << none << none;
    QTest::newRow("sim version") << sim << args("-v") << 0
        << QStringLiteral("nakos-sensor-sim ") + version << none << none;
    QTest::newRow("sim unknown option") << sim << args("--bogus") << 2
        << none << QStringLiteral("nakos-sensor-sim: Unknown option 'bogus'.") << tryHelp("nakos-sensor-sim");
    QTest::newRow("sim argument") << sim << args("extra") << 2
        << none << QStringLiteral("nakos-sensor-sim: unexpected argument 'extra'") << tryHelp("nakos-sensor-sim");
    QTest::newRow("sim bad number") << sim << args("--interval soon") << 2
        << none << QStringLiteral("nakos-sensor-sim: --interval takes a whole number of 0 or more, not 'soon'")
        << none;
    // clang-format on
}

void TestCommandLine::answers() {
    QFETCH(QString, program);
    QFETCH(QStringList, args);
    QFETCH(QString, out);
    QFETCH(QString, err);
    QFETCH(QString, hint);
    const Outcome o = run(program, args);
    QTEST(o.status, "status");
    QVERIFY2(out.isEmpty() ? o.out.isEmpty() : o.out.startsWith(out), qPrintable(o.out));
    QStringList expected;
    for (const QString &line : {err, hint}) {
        if (!line.isEmpty())
            expected << line + QLatin1Char('\n');
    }
    QCOMPARE(o.err, expected.join(QString()));
    QCOMPARE(o.leftBehind, QStringList());
}

void TestCommandLine::manPageNamesEveryOption_data() {
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("helpArgs");
    QTest::newRow("nakos-monitor") << QStringLiteral("nakos-monitor") << QStringList{};
    // The tool's options belong to its commands: every command's usage.
    QStringList toolHelp{QString()};
    for (const char *command : {"convert", "info", "plot", "record"})
        toolHelp << QString::fromLatin1(command);
    QTest::newRow("nakos-tool") << QStringLiteral("nakos-tool") << toolHelp;
    QTest::newRow("nakos-sensor-sim") << QStringLiteral("nakos-sensor-sim") << QStringList{};
}

void TestCommandLine::manPageNamesEveryOption() {
    QFETCH(QString, program);
    QFETCH(QStringList, helpArgs);
    QFile page(QStringLiteral(NAKOS_MAN_DIR "/%1.1").arg(program));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString roff = QString::fromUtf8(page.readAll());
    QVERIFY2(roff.contains(
                 QStringLiteral("\"%1 %2\"").arg(program, QStringLiteral(NAKOS_PROJECT_VERSION))),
             "the .TH line names another version");
    if (helpArgs.isEmpty())
        helpArgs << QString();
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

QTEST_GUILESS_MAIN(TestCommandLine)
#include "test_commandline.moc"
