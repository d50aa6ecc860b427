#include "files/ui/importselectiondialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

ImportSelectionDialog::ImportSelectionDialog(QWidget *parent)
    : QDialog(parent), Label1(new QLabel(QStringLiteral("Import selection"), this)),
      ListView1(new QTreeWidget(this)), OKButton(new QPushButton(QStringLiteral("OK"), this)) {
    setWindowTitle(QStringLiteral("Select import files"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    Label1->setObjectName(QStringLiteral("Label1"));
    ListView1->setObjectName(QStringLiteral("ListView1"));
    OKButton->setObjectName(QStringLiteral("OKButton"));
    QFont heading = Label1->font();
    heading.setBold(true);
    Label1->setFont(heading);

    ListView1->setRootIsDecorated(false);
    ListView1->setUniformRowHeights(true); // thousands of rows stay quick
    ListView1->setSelectionMode(QAbstractItemView::ExtendedSelection);
    ListView1->setHeaderLabels({QStringLiteral("Filename"), QStringLiteral("File description")});
    ListView1->header()->setStretchLastSection(true);
    ListView1->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    ListView1->setMinimumSize(560, 320);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(OKButton);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addWidget(ListView1);
    layout->addLayout(buttons);

    connect(OKButton, &QPushButton::clicked, this, &ImportSelectionDialog::accept);
    connect(ListView1, &QTreeWidget::itemSelectionChanged, this,
            &ImportSelectionDialog::selectionChanged);
    confirmButton_disable();
}

void ImportSelectionDialog::setEntries(const QList<LogFileEntry> &entries) {
    ListView1->clear();
    QList<QTreeWidgetItem *> items;
    items.reserve(entries.size());
    for (const LogFileEntry &e : entries)
        items << new QTreeWidgetItem(QStringList{e.name, e.description});
    ListView1->addTopLevelItems(items);
    selectionChanged();
}

QList<int> ImportSelectionDialog::selectedRows() const {
    QList<int> rows;
    const QList<QTreeWidgetItem *> selected = ListView1->selectedItems();
    for (QTreeWidgetItem *item : selected)
        rows << ListView1->indexOfTopLevelItem(item);
    std::sort(rows.begin(), rows.end());
    return rows;
}

QList<int> ImportSelectionDialog::choose(const QList<LogFileEntry> &entries) {
    setEntries(entries);
    return exec() == QDialog::Accepted ? selectedRows() : QList<int>();
}

void ImportSelectionDialog::confirmButton_enable() {
    OKButton->setEnabled(true);
    OKButton->setDefault(true);
}

void ImportSelectionDialog::confirmButton_disable() {
    OKButton->setEnabled(false);
}

void ImportSelectionDialog::selectionChanged() {
    if (ListView1->selectedItems().isEmpty())
        confirmButton_disable();
    else
        confirmButton_enable();
}
