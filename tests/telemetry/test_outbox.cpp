// The telemetry outbox on its own: order, window, acknowledgements out of
// order, what a crash leaves behind, and the journal's upkeep.
#include "telemetry/outbox.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray msg(int n) {
    return "{\"n\":" + QByteArray::number(n) + '}';
}

// Hands out up to `count` messages with tokens from `token` on; returns them.
QList<QByteArray> takeSome(TelemetryOutbox &box, int count, int token) {
    QList<QByteArray> out;
    QByteArray m;
    while (out.size() < count && box.next(m)) {
        box.take(token++);
        out << m;
    }
    return out;
}

void writeFile(const QString &path, const QByteArray &bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

} // namespace

class TestOutbox : public QObject {
    Q_OBJECT
private slots:
    void windowAndAcknowledgements();
    void afterACrash_data();
    void afterACrash();
    void upkeep();
    void oneProcessPerOutbox();
};

void TestOutbox::windowAndAcknowledgements() {
    QTemporaryDir dir;
    TelemetryOutbox box;
    QCOMPARE(box.open(dir.path(), QStringLiteral("c1")), QString());
    box.setWindow(2);
    for (int n = 0; n < 5; ++n)
        QVERIFY(!box.append(msg(n)));
    QVERIFY(box.append("two\nlines")); // refused: a message is one line
    QCOMPARE(box.waiting(), 5);
    QCOMPARE(takeSome(box, 9, 10), (QList<QByteArray>{msg(0), msg(1)}));
    // The second acknowledged first: nothing is done until the first is.
    box.acknowledge(11);
    box.acknowledge(99); // no such token
    QCOMPARE(box.waiting(), 5);
    QCOMPARE(takeSome(box, 9, 12), QList<QByteArray>());
    box.acknowledge(10);
    QCOMPARE(box.waiting(), 3);
    QCOMPARE(takeSome(box, 1, 12), (QList<QByteArray>{msg(2)}));
    // A restart sends again what was handed out and not acknowledged.
    box.close();
    QCOMPARE(box.open(dir.path(), QStringLiteral("c1")), QString());
    QCOMPARE(box.waiting(), 3);
    QCOMPARE(takeSome(box, 9, 1), (QList<QByteArray>{msg(2), msg(3)}));
    // So does a rewind, and the old tokens no longer count.
    box.rewind();
    box.acknowledge(1);
    QCOMPARE(box.waiting(), 3);
    QCOMPARE(takeSome(box, 9, 5), (QList<QByteArray>{msg(2), msg(3)}));
    box.acknowledge(5);
    box.acknowledge(6);
    QCOMPARE(takeSome(box, 9, 7), (QList<QByteArray>{msg(4)}));
    box.acknowledge(7);
    QCOMPARE(box.waiting(), 0);
    QCOMPARE(box.journalBytes(), 0); // all delivered: the journal starts again
}

// A journal and a .sent number as a crash may leave them.
void TestOutbox::afterACrash_data() {
    QTest::addColumn<QByteArray>("journal");
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QList<QByteArray>>("waiting");
    const QByteArray three = "a\nbb\nccc\n";
    QTest::newRow("acknowledged start")
        << three << QByteArray("2\n") << QList<QByteArray>{"bb", "ccc"};
    QTest::newRow("line cut short") << three + "dd" << QByteArray("5") << QList<QByteArray>{"ccc"};
    QTest::newRow("number inside a line")
        << three << QByteArray("3") << QList<QByteArray>{"a", "bb", "ccc"};
    QTest::newRow("number past the end")
        << three << QByteArray("400") << QList<QByteArray>{"a", "bb", "ccc"};
    QTest::newRow("garbled number")
        << three << QByteArray("x1") << QList<QByteArray>{"a", "bb", "ccc"};
    QTest::newRow("no .sent") << three << QByteArray() << QList<QByteArray>{"a", "bb", "ccc"};
    QTest::newRow("all acknowledged") << three << QByteArray("9") << QList<QByteArray>{};
    QTest::newRow("nothing but a cut line")
        << QByteArray("abc") << QByteArray("0") << QList<QByteArray>{};
}

void TestOutbox::afterACrash() {
    QFETCH(QByteArray, journal);
    QFETCH(QByteArray, sent);
    QFETCH(QList<QByteArray>, waiting);
    QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("c1.journal")), journal);
    if (!sent.isEmpty())
        writeFile(dir.filePath(QStringLiteral("c1.sent")), sent);
    TelemetryOutbox box;
    QCOMPARE(box.open(dir.path(), QStringLiteral("c1")), QString());
    QCOMPARE(box.waiting(), waiting.size());
    // What comes after the crash follows on a line of its own.
    QVERIFY(!box.append("new"));
    QCOMPARE(takeSome(box, 99, 1), waiting + QList<QByteArray>{"new"});
}

// A journal that never empties (always a message in flight) drops its
// acknowledged start once that is large, and keeps the rest in order.
void TestOutbox::upkeep() {
    QTemporaryDir dir;
    TelemetryOutbox box;
    QCOMPARE(box.open(dir.path(), QStringLiteral("c1")), QString());
    box.setWindow(1000000);
    const QByteArray pad(200, 'x');
    const int total = 50000; // some 10 MB
    for (int n = 0; n < total; ++n)
        QVERIFY(!box.append(msg(n) + pad));
    const qint64 full = box.journalBytes();
    QCOMPARE(takeSome(box, total, 1).size(), total);
    for (int token = 1; token < total; ++token)
        box.acknowledge(token);
    QCOMPARE(box.waiting(), 1);
    QVERIFY2(box.journalBytes() < full / 2, QByteArray::number(box.journalBytes()));
    QVERIFY(!box.append(msg(total)));
    box.close();
    QCOMPARE(box.open(dir.path(), QStringLiteral("c1")), QString());
    QCOMPARE(takeSome(box, 9, 1), (QList<QByteArray>{msg(total - 1) + pad, msg(total)}));
}

void TestOutbox::oneProcessPerOutbox() {
    QTemporaryDir dir;
    TelemetryOutbox first, second;
    QCOMPARE(first.open(dir.path(), QStringLiteral("c1")), QString());
    QCOMPARE(second.open(dir.path(), QStringLiteral("c1")),
             QStringLiteral("the outbox %1 is in use by another process")
                 .arg(dir.filePath(QStringLiteral("c1.journal"))));
    QCOMPARE(second.open(dir.path(), QStringLiteral("c2")), QString());
    QVERIFY(!second.append("x"));
}

QTEST_GUILESS_MAIN(TestOutbox)
#include "test_outbox.moc"
