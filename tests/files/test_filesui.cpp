#include "files/ui/datahandlingdialog.h"
#include "files/ui/progresswindow.h"
#include "files/ui/qtfiledialogs.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

namespace {

// Once the modal loop of the Data handling dialog under `parent` runs:
// picks the option (if any), then clicks the button or presses Escape.
void answerWhenShown(QWidget &parent, const char *option, const char *button) {
    QTimer::singleShot(0, &parent, [&parent, option, button] {
        auto *dialog = qobject_cast<QDialog *>(&parent);
        if (!dialog)
            dialog = parent.findChild<DataHandlingDialog *>();
        if (option)
            dialog->findChild<QRadioButton *>(QLatin1String(option))->click();
        if (button)
            dialog->findChild<QPushButton *>(QLatin1String(button))->click();
        else
            QTest::keyClick(dialog, Qt::Key_Escape);
    });
}

} // namespace

class TestFilesUi : public QObject {
    Q_OBJECT
private slots:
    void dataHandlingDialog();
    void progressWindow();
    void qtFilters();
};

void TestFilesUi::dataHandlingDialog() {
    DataHandlingDialog dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Data handling"));
    QStringList captions{dialog.findChild<QLabel *>(QStringLiteral("Label1"))->text()};
    for (const char *name : {"Option1", "Option2", "Option3", "OKButton", "CancelButton"})
        captions << dialog.findChild<QAbstractButton *>(QLatin1String(name))->text();
    QCOMPARE(captions.join(QLatin1Char('|')),
             QStringLiteral("Action after reading the data|Replace buffer content|"
                            "Insert before buffer|Append to buffer|OK|Cancel"));

    answerWhenShown(dialog, nullptr, "OKButton");
    QCOMPARE(dialog.choose(), int16_t(1));
    answerWhenShown(dialog, "Option3", "OKButton");
    QCOMPARE(dialog.choose(), int16_t(3));
    answerWhenShown(dialog, "Option2", nullptr); // Escape is Cancel, not the last choice
    QCOMPARE(dialog.choose(), int16_t(0));
    answerWhenShown(dialog, "Option2", "CancelButton");
    QCOMPARE(dialog.choose(), int16_t(0));

    // The program's dialog is made on first use and kept: the second use
    // starts at the choice of the first.
    QWidget parent;
    QtFileDialogs dialogs(&parent);
    answerWhenShown(parent, "Option3", "OKButton");
    QCOMPARE(dialogs.dataHandling_choose(), int16_t(3));
    answerWhenShown(parent, nullptr, "OKButton");
    QCOMPARE(dialogs.dataHandling_choose(), int16_t(3));
    QCOMPARE(parent.findChildren<DataHandlingDialog *>().size(), 1);
}

void TestFilesUi::progressWindow() {
    ProgressWindow window;
    window.progress_begin(QStringLiteral("Saving file..."));
    window.progress_setValue(40);
    QVERIFY(window.isVisible());
    QCOMPARE(window.windowTitle(), QStringLiteral("Saving file..."));
    QCOMPARE(window.value(), 40);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCOMPARE(window.pos(), QPoint(screen.width() / 5, screen.height() / 5));
    window.progress_end();
    window.progress_begin(QStringLiteral("Loading file..."));
    QCOMPARE(window.value(), 0); // each run starts at 0
}

// The dialog filters in Qt's form, and where a Qt dialog starts.
void TestFilesUi::qtFilters() {
    QCOMPARE(FileDialogs::qtFilter(QStringLiteral("Data|*.txt;*.dat|All files (*.*)|*.*|")),
             QStringLiteral("Data (*.txt *.dat);;All files (*.*)"));
#ifndef Q_OS_WIN
    QCOMPARE(FileDialogs::startPath(QStringLiteral("C:\\")), QDir::homePath());
#endif
    QCOMPARE(FileDialogs::startPath(QStringLiteral("/data/a.txt")), QStringLiteral("/data/a.txt"));
}

QTEST_MAIN(TestFilesUi)
#include "test_filesui.moc"
