// The desktop program's command line, read before any window exists.
#include "core/appoptions.h"

#include <QTest>

using Action = AppOptions::Action;
Q_DECLARE_METATYPE(AppOptions::Action)

namespace {

QStringList words(const char *line) {
    return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestAppOptions : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Run rows give the options and the files (every argument that is not an
    // option, and every one after "--", in command-line order); Fail rows a
    // part of the error line and whether the usage hint follows.
    void parse_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<Action>("action");
        QTest::addColumn<bool>("demo");
        QTest::addColumn<int>("port");
        QTest::addColumn<bool>("startQuery");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("error");
        QTest::addColumn<bool>("hint");
        const auto ok = [](const char *name, const char *line, Action action, bool demo = false,
                           int port = 0, bool query = false, const char *files = "") {
            QTest::newRow(name) << words(line) << action << demo << port << query << words(files)
                                << QString() << false;
        };
        const auto bad = [](const char *name, const char *line, const char *error, bool hint) {
            QTest::newRow(name) << words(line) << Action::Fail << false << 0 << false
                                << QStringList() << QString::fromLatin1(error) << hint;
        };
        ok("nothing", "", Action::Run);
        ok("recording station", "--port 7 --start-query", Action::Run, false, 7, true);
        ok("port with =, demo", "--demo --port=19", Action::Run, true, 19);
        ok("last port wins", "--port 3 --port 1", Action::Run, false, 1);
        ok("Qt's options pass", "-platform offscreen --style=fusion -reverse --demo", Action::Run,
           true);
        ok("Qt's value is not ours", "-qwindowtitle --port", Action::Run);
        ok("files around options", "run1.txt --port 2 NAKOS435.log --demo", Action::Run, true, 2,
           false, "run1.txt NAKOS435.log");
        ok("a Qt option's value", "-style fusion b.txt", Action::Run, false, 0, false, "b.txt");
        ok("files after --", "a.txt -- --demo -", Action::Run, false, 0, false, "a.txt --demo -");
        ok("-h", "-h", Action::Help);
        ok("version", "--demo -v", Action::Version);
        ok("help before a bad option", "--help --bogus", Action::Help);
        bad("unknown option", "--bogus --help", "unknown option '--bogus'", true);
        bad("one dash for ours", "-demo", "'-demo'", true);
        bad("standard input", "-", "unexpected argument '-'", true);
        bad("port without value", "--start-query --port", "'--port' needs a value", true);
        bad("flag with value", "--demo=1", "takes no value", true);
        bad("port 0", "--port=0", "from 1 to 19, not '0'", false);
        bad("port COM3", "--port COM3", "not 'COM3'", false);
        bad("empty port", "--port=", "not ''", false);
        bad("poll period too short", "--query-interval 99", "from 100 to 600000, not '99'", false);
    }

    void parse() {
        QFETCH(QStringList, args);
        QFETCH(Action, action);
        QFETCH(QString, error);
        const AppOptions o = parseAppOptions(args);
        QCOMPARE(o.action, action);
        if (action == Action::Fail) {
            QVERIFY2(o.error.contains(error), qPrintable(o.error));
            QVERIFY(!o.error.contains(QLatin1Char('\n')));
            QTEST(o.usageHint, "hint");
            return;
        }
        QVERIFY(o.error.isEmpty());
        if (action != Action::Run)
            return;
        QTEST(o.demo, "demo");
        QTEST(o.port, "port");
        QTEST(o.startQuery, "startQuery");
        QTEST(o.files, "files");
        QCOMPARE(parseAppOptions(words("--query-interval=500") + args).queryInterval_ms, 500);
    }
};

QTEST_GUILESS_MAIN(TestAppOptions)
#include "test_appoptions.moc"
