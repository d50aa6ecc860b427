// What the Data handling dialog returns: 1 to 3 for its options, 0 for
// Cancel and Escape.
#include "files/ui/datahandlingdialog.h"
#include "files/ui/qtfiledialogs.h"

#include <QPushButton>
#include <QRadioButton>
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
};

void TestFilesUi::dataHandlingDialog() {
    DataHandlingDialog dialog;
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

QTEST_MAIN(TestFilesUi)
#include "test_filesui.moc"
