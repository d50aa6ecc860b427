// What the Data handling and import selection dialogs return.
#include "files/ui/datahandlingdialog.h"
#include "files/ui/importselectiondialog.h"
#include "files/ui/qtfiledialogs.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

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

    void dataHandlingDialog() {
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

    // Confirm only with a selection; the rows come back in list order whatever
    // order they were picked in; Escape chooses nothing.
    void importSelection() {
        const QList<LogFileEntry> entries = {{QStringLiteral("NAKOS411.log"), QStringLiteral("a")},
                                             {QStringLiteral("NAKOS412.log"), QStringLiteral("b")},
                                             {QStringLiteral("NAKOS413.log"), QStringLiteral("c")}};
        QWidget parent;
        QtFileDialogs dialogs(&parent);
        bool checked = false;
        QTimer::singleShot(0, &parent, [&] {
            auto *dialog = parent.findChild<ImportSelectionDialog *>();
            auto *list = dialog->findChild<QTreeWidget *>(QStringLiteral("ListView1"));
            auto *ok = dialog->findChild<QPushButton *>(QStringLiteral("OKButton"));
            [&] {
                QCOMPARE(dialog->windowTitle(), QStringLiteral("Select import files"));
                QCOMPARE(dialog->findChild<QLabel *>(QStringLiteral("Label1"))->text(),
                         QStringLiteral("Import selection"));
                QCOMPARE(list->headerItem()->text(0), QStringLiteral("Filename"));
                QCOMPARE(list->headerItem()->text(1), QStringLiteral("File description"));
                QCOMPARE(list->topLevelItem(1)->text(1), QStringLiteral("b"));
                QVERIFY(!ok->isEnabled());
                list->topLevelItem(2)->setSelected(true);
                list->topLevelItem(0)->setSelected(true);
                QVERIFY(ok->isEnabled());
                list->topLevelItem(2)->setSelected(false);
                list->topLevelItem(0)->setSelected(false);
                QVERIFY(!ok->isEnabled());
                list->topLevelItem(2)->setSelected(true);
                list->topLevelItem(0)->setSelected(true);
                checked = true;
            }();
            // A failed check must not leave the dialog waiting.
            if (checked)
                ok->click();
            else
                dialog->reject();
        });
        QCOMPARE(dialogs.dialog_selectImportFiles(entries), (QList<int>{0, 2}));
        QVERIFY(checked);

        ImportSelectionDialog dialog;
        QTimer::singleShot(0, &dialog, [&dialog] {
            dialog.findChild<QTreeWidget *>()->topLevelItem(1)->setSelected(true);
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        QVERIFY(dialog.choose(entries).isEmpty());
    }

    void dialogStartAndFilters() {
        const QString home = QDir::homePath();
        const QList<std::pair<QString, QString>> starts = {
            {QStringLiteral("C:\\"), home},
            {QStringLiteral("c:"), home},
            {QStringLiteral("/data/run1.txt"), QStringLiteral("/data/run1.txt")},
            {QStringLiteral("C:\\x"), QStringLiteral("C:\\x")}};
        for (const auto &[given, opened] : starts)
            QCOMPARE(FileDialogs::startPath(given), opened);
        QCOMPARE(FileDialogs::qtFilter(FileDialogs::logFilter),
                 QStringLiteral("Log files (*.log);;All files (*.*)"));
        QCOMPARE(FileDialogs::qtFilter(QStringLiteral("Data|*.txt;*.dat|")),
                 QStringLiteral("Data (*.txt *.dat)"));
    }
};

QTEST_MAIN(TestFilesUi)
#include "test_filesui.moc"
