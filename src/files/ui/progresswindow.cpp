#include "files/ui/progresswindow.h"

#include <QGuiApplication>
#include <QProgressBar>
#include <QScreen>
#include <QVBoxLayout>

ProgressWindow::ProgressWindow(QWidget *parent)
    : QWidget(parent, Qt::Tool), ProgressBar1(new QProgressBar(this)) {
    ProgressBar1->setObjectName(QStringLiteral("ProgressBar1"));
    ProgressBar1->setRange(0, 100);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(ProgressBar1);
    resize(320, sizeHint().height());
}

void ProgressWindow::progress_begin(const QString &caption) {
    setWindowTitle(caption);
    ProgressBar1->setValue(0);
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect r = screen->geometry();
        move(r.left() + r.width() / 5, r.top() + r.height() / 5);
    }
    show();
}

void ProgressWindow::progress_setValue(int percent) {
    ProgressBar1->setValue(percent);
}

void ProgressWindow::progress_end() {
    hide();
}

int ProgressWindow::value() const {
    return ProgressBar1->value();
}
