#include "gui/aboutdialog.h"

#include "core/title.h"
#include "gui/appicon.h"
#include "settings/settings.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

AboutDialog::AboutDialog(QWidget *parent) : QDialog(parent) {
    setObjectName(QStringLiteral("About"));
    setWindowTitle(QStringLiteral("About"));
    auto *icon = new QLabel;
    icon->setPixmap(appIcon().pixmap(64, 64));
    auto *title = new QLabel(QLatin1String(kProgramTitle));
    title->setObjectName(QStringLiteral("Label_title"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSizeF(f.pointSizeF() * 1.4);
    title->setFont(f);
    auto *version = new QLabel(QStringLiteral("Version ") + settings::versionText());
    version->setObjectName(QStringLiteral("Label_version"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto *texts = new QVBoxLayout;
    texts->addWidget(title);
    texts->addWidget(version);
    texts->addStretch();
    auto *row = new QHBoxLayout;
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addLayout(texts);
    auto *top = new QVBoxLayout(this);
    top->addLayout(row);
    top->addWidget(buttons);
}
