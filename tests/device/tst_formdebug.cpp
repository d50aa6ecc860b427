// The link's trace window.
#include "device/ui/formdebug.h"

#include <QPlainTextEdit>
#include <QTest>

class TestFormDebug : public QObject {
    Q_OBJECT

private slots:

    void doutAppendsWithoutSeparator() {
        Form_debug form;
        QCOMPARE(form.windowTitle(), QStringLiteral("NAK_OS Debug"));
        form.show();
        form.dout(QStringLiteral("list"));
        form.dout(QStringLiteral(" 12"));
        form.Text1->moveCursor(QTextCursor::Start); // appending ignores the caret
        form.dout(QStringLiteral("\nnext"));
        QCOMPARE(form.Text1->toPlainText(), QStringLiteral("list 12\nnext"));
    }
};

QTEST_MAIN(TestFormDebug)
#include "tst_formdebug.moc"
