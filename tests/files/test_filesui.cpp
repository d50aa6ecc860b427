#include "files/ui/datahandlingdialog.h"
#include "files/ui/progresswindow.h"
#include "files/ui/qtfiledialogs.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

namespace {

template <typename T> T *child(QWidget &w, const char *name) {
    T *c = w.findChild<T *>(QLatin1String(name));
    if (!c)
        qFatal("no child %s", name);
    return c;
}

// Clicks a button of the dialog once its modal loop runs.
void clickWhenShown(QDialog &dialog, const char *option, const char *button) {
    QTimer::singleShot(0, &dialog, [&dialog, option, button] {
        if (option)
            child<QRadioButton>(dialog, option)->click();
        child<QPushButton>(dialog, button)->click();
    });
}

} // namespace

class TestFilesUi : public QObject {
    Q_OBJECT
private slots:
    void dataHandlingCaptions();
    void dataHandlingResults();
    void dataHandlingKeepsTheLastChoice();
    void progressWindow();
};

void TestFilesUi::dataHandlingCaptions() {
    DataHandlingDialog dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Data handling"));
    QCOMPARE(child<QLabel>(dialog, "Label1")->text(),
             QStringLiteral("Action after reading the data"));
    QCOMPARE(child<QRadioButton>(dialog, "Option1")->text(),
             QStringLiteral("Replace buffer content"));
    QCOMPARE(child<QRadioButton>(dialog, "Option2")->text(),
             QStringLiteral("Insert before buffer"));
    QCOMPARE(child<QRadioButton>(dialog, "Option3")->text(), QStringLiteral("Append to buffer"));
    QCOMPARE(child<QPushButton>(dialog, "CancelButton")->text(), QStringLiteral("Cancel"));
    QVERIFY(child<QRadioButton>(dialog, "Option1")->isChecked());
    QCOMPARE(dialog.get_returnValue(), int16_t(0));
}

void TestFilesUi::dataHandlingResults() {
    DataHandlingDialog dialog;
    clickWhenShown(dialog, nullptr, "OKButton");
    QCOMPARE(dialog.choose(), int16_t(1));
    clickWhenShown(dialog, "Option2", "OKButton");
    QCOMPARE(dialog.choose(), int16_t(2));
    clickWhenShown(dialog, "Option3", "OKButton");
    QCOMPARE(dialog.choose(), int16_t(3));
    QVERIFY(!dialog.isVisible());
    clickWhenShown(dialog, nullptr, "CancelButton");
    QCOMPARE(dialog.choose(), int16_t(0));
    // Escape counts as Cancel, not as the last choice.
    clickWhenShown(dialog, "Option2", "OKButton");
    QCOMPARE(dialog.choose(), int16_t(2));
    QTimer::singleShot(0, &dialog, [&dialog] { QTest::keyClick(&dialog, Qt::Key_Escape); });
    QCOMPARE(dialog.choose(), int16_t(0));
}

void TestFilesUi::dataHandlingKeepsTheLastChoice() {
    QWidget parent;
    QtFileDialogs dialogs(&parent);
    // The dialog is made on first use and kept: the second use starts at
    // the choice of the first.
    QTimer::singleShot(0, &parent, [&parent] {
        auto *dialog = parent.findChild<DataHandlingDialog *>();
        if (!dialog)
            qFatal("no Data handling dialog"); // a failed check here would hang in exec()
        child<QRadioButton>(*dialog, "Option3")->click();
        child<QPushButton>(*dialog, "OKButton")->click();
    });
    QCOMPARE(dialogs.dataHandling_choose(), int16_t(3));
    QTimer::singleShot(0, &parent, [&parent] {
        auto *dialog = parent.findChild<DataHandlingDialog *>();
        QVERIFY(child<QRadioButton>(*dialog, "Option3")->isChecked());
        child<QPushButton>(*dialog, "OKButton")->click();
    });
    QCOMPARE(dialogs.dataHandling_choose(), int16_t(3));
    QCOMPARE(parent.findChildren<DataHandlingDialog *>().size(), 1);
}

void TestFilesUi::progressWindow() {
    ProgressWindow window;
    window.progress_begin(QStringLiteral("Loading file..."));
    QVERIFY(window.isVisible());
    QCOMPARE(window.windowTitle(), QStringLiteral("Loading file..."));
    QCOMPARE(window.value(), 0);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCOMPARE(window.pos(), QPoint(screen.width() / 5, screen.height() / 5));
    window.progress_setValue(40);
    QCOMPARE(window.value(), 40);
    window.progress_end();
    QVERIFY(!window.isVisible());
    // A new run starts at 0 with its own caption.
    window.progress_begin(QStringLiteral("Saving file..."));
    QCOMPARE(window.value(), 0);
    QCOMPARE(window.windowTitle(), QStringLiteral("Saving file..."));
}

QTEST_MAIN(TestFilesUi)
#include "test_filesui.moc"
