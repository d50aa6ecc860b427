// The desktop program's command line, read before any window exists.
#include "core/appoptions.h"

#include <QTest>

using Action = AppOptions::Action;
using namespace Qt::StringLiterals;
Q_DECLARE_METATYPE(AppOptions::Action)

class TestAppOptions : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void parse_data();
    void parse();
    void files_data();
    void files();
};

void TestAppOptions::parse_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<Action>("action");
    QTest::addColumn<bool>("demo");
    QTest::addColumn<int>("port");
    QTest::addColumn<bool>("startQuery");
    QTest::addColumn<QString>("error"); // a part of the error line
    QTest::addColumn<bool>("hint");
    const auto args = [](const char *line) {
        return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    const QString none;
    // clang-format off
    QTest::newRow("nothing") << args("") << Action::Run << false << 0 << false << none << false;
    QTest::newRow("recording station") << args("--port 7 --start-query")
        << Action::Run << false << 7 << true << none << false;
    QTest::newRow("port with =, demo") << args("--demo --port=19")
        << Action::Run << true << 19 << false << none << false;
    QTest::newRow("last port wins") << args("--port 3 --port 1")
        << Action::Run << false << 1 << false << none << false;
    QTest::newRow("Qt's options pass") << args("-platform offscreen --style=fusion -reverse --demo")
        << Action::Run << true << 0 << false << none << false;
    QTest::newRow("Qt's value is not ours") << args("-qwindowtitle --port")
        << Action::Run << false << 0 << false << none << false;
    QTest::newRow("-h") << args("-h") << Action::Help << false << 0 << false << none << false;
    QTest::newRow("version") << args("--demo -v") << Action::Version
        << true << 0 << false << none << false;
    QTest::newRow("help before a bad option") << args("--help --bogus")
        << Action::Help << false << 0 << false << none << false;
    QTest::newRow("unknown option") << args("--bogus --help")
        << Action::Fail << false << 0 << false << QStringLiteral("unknown option '--bogus'") << true;
    QTest::newRow("one dash for ours") << args("-demo")
        << Action::Fail << false << 0 << false << QStringLiteral("'-demo'") << true;
    QTest::newRow("standard input") << args("-")
        << Action::Fail << false << 0 << false << QStringLiteral("unexpected argument '-'") << true;
    QTest::newRow("port without value") << args("--start-query --port")
        << Action::Fail << false << 0 << false << QStringLiteral("'--port' needs a value") << true;
    QTest::newRow("flag with value") << args("--demo=1")
        << Action::Fail << false << 0 << false << QStringLiteral("takes no value") << true;
    QTest::newRow("port 0") << args("--port=0")
        << Action::Fail << false << 0 << false << QStringLiteral("from 1 to 19, not '0'") << false;
    QTest::newRow("port COM3") << args("--port COM3")
        << Action::Fail << false << 0 << false << QStringLiteral("not 'COM3'") << false;
    QTest::newRow("empty port") << args("--port=")
        << Action::Fail << false << 0 << false << QStringLiteral("not ''") << false;
    QTest::newRow("poll period too short") << args("--query-interval 99")
        << Action::Fail << false << 0 << false << QStringLiteral("from 100 to 600000, not '99'") << false;
    // clang-format on
}

void TestAppOptions::parse() {
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
    QCOMPARE(parseAppOptions(args + QStringList{QStringLiteral("--query-interval=500")})
                 .queryInterval_ms,
             500);
}

// Every argument that is not an option, and every one after "--", is a
// file to read, in command-line order.
void TestAppOptions::files_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("none") << QStringList{u"--demo"_s} << QStringList();
    QTest::newRow("around options")
        << QStringList{u"run1.txt"_s, u"--port"_s, u"2"_s, u"NAKOS435.log"_s, u"--demo"_s}
        << QStringList{u"run1.txt"_s, u"NAKOS435.log"_s};
    QTest::newRow("a Qt option's value")
        << QStringList{u"-style"_s, u"fusion"_s, u"b.txt"_s} << QStringList{u"b.txt"_s};
    QTest::newRow("after --") << QStringList{u"a.txt"_s, u"--"_s, u"--demo"_s, u"-"_s}
                              << QStringList{u"a.txt"_s, u"--demo"_s, u"-"_s};
}

void TestAppOptions::files() {
    QFETCH(QStringList, args);
    const AppOptions o = parseAppOptions(args);
    QCOMPARE(o.action, Action::Run);
    QTEST(o.files, "files");
}

QTEST_GUILESS_MAIN(TestAppOptions)
#include "test_appoptions.moc"
