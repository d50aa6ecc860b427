#include "panel/ui/controlpanel.h"

#include "core/store.h"
#include "device/devicelink.h"
#include "device/portnames.h"
#include "panel/panelstats.h"
#include "session/monitorsession.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDateTime>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

template <typename T> T *named(T *w, const QString &name) {
    w->setObjectName(name);
    return w;
}

const QString startCaption = QStringLiteral("Start Query Timer");
const QString stopCaption = QStringLiteral("Stop Query Timer");

} // namespace

ControlPanel::ControlPanel(MonitorSession &session, QWidget *parent)
    : QMdiSubWindow(parent), m_session(session) {
    setObjectName(QStringLiteral("main_control"));
    setWindowTitle(QStringLiteral("Control Panel"));
    auto *client = new QWidget;
    setWidget(client);

    Frame1 = named(new QGroupBox(QStringLiteral("Data reading")), QStringLiteral("Frame1"));
    Combo1 = named(new QComboBox, QStringLiteral("Combo1"));
    Command1 = named(new QPushButton, QStringLiteral("Command1"));
    auto *reading = new QVBoxLayout(Frame1);
    reading->addWidget(Combo1);
    reading->addWidget(Command1);

    Label1 = named(new QLabel(QStringLiteral("Oil name:")), QStringLiteral("Label1"));
    Text_oilName = named(new QLineEdit, QStringLiteral("Text_oilName"));
    Label1_data = named(new QLabel, QStringLiteral("Label1_data"));
    Label2_data = named(new QLabel, QStringLiteral("Label2_data"));
    Label_alarm = named(new QLabel, QStringLiteral("Label_alarm"));
    Label_alarm->setWordWrap(true);
    {
        // The red of the alarm threshold's line in the water chart.
        QPalette red = Label_alarm->palette();
        red.setColor(QPalette::WindowText, QColor(204, 0, 0));
        Label_alarm->setPalette(red);
        QFont bold = Label_alarm->font();
        bold.setBold(true);
        Label_alarm->setFont(bold);
    }
    Label_alarm->hide();

    Frame2 = named(new QGroupBox(QStringLiteral("Oil stream")), QStringLiteral("Frame2"));
    auto *streams = new QGridLayout(Frame2);
    for (int i = 0; i < 6; ++i) {
        QRadioButton *option = named(new QRadioButton(QString::number(i + 1)),
                                     QStringLiteral("Option_oilStream_%1").arg(i + 1));
        Option_oilStream[size_t(i)] = option;
        streams->addWidget(option, i / 3, i % 3);
        connect(option, &QRadioButton::clicked, this, [this, i] { selectStream(int16_t(i + 1)); });
    }
    Option_oilStream_any =
        named(new QRadioButton(QStringLiteral("Any")), QStringLiteral("Option_oilStream_any"));
    streams->addWidget(Option_oilStream_any, 2, 0);
    connect(Option_oilStream_any, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            selectStream(0);
    });
    Picture_logo = named(new QLabel, QStringLiteral("Picture_logo"));

    auto *layout = new QVBoxLayout(client);
    layout->addWidget(Frame1);
    layout->addWidget(Label1);
    layout->addWidget(Text_oilName);
    layout->addWidget(Label1_data);
    layout->addWidget(Label2_data);
    layout->addWidget(Label_alarm);
    layout->addWidget(Frame2);
    layout->addWidget(Picture_logo);
    layout->addStretch();

    // Initialisation: the stream selector hidden, querying off, the port
    // list from COM 1 to COM 19 with the first entry chosen, statistics.
    Frame2->hide();
    for (QRadioButton *option : Option_oilStream)
        option->hide();
    Option_oilStream_any->hide();
    Command1->setText(startCaption);
    for (int n = 1; n <= panel::portEntries; ++n)
        Combo1->addItem(panel::portEntry(n));
    Combo1->setCurrentIndex(0);
    updatePortTips();
    Combo1_Validate();
    data_statistics_update();

    // Loaded: the logo hidden, all streams selected.
    Picture_logo->hide();
    Option_oilStream_any->setChecked(true);

    Combo1->installEventFilter(this);
    Text_oilName->installEventFilter(this);
    connect(Combo1, &QComboBox::currentIndexChanged, this, [this](int index) {
        Combo1->setToolTip(Combo1->itemData(index, Qt::ToolTipRole).toString());
    });
    connect(Command1, &QPushButton::clicked, this, &ControlPanel::Command1_Click);
    connect(Text_oilName, &QLineEdit::textChanged, this, &ControlPanel::oilName_update);
    connect(Text_oilName, &QLineEdit::editingFinished, this, &ControlPanel::oilName_update);
    connect(&session, &MonitorSession::oilNameShown, this, &ControlPanel::oilName_show);
    connect(&session, &MonitorSession::queryStateChanged, this,
            [this](bool running) { Command1->setText(running ? stopCaption : startCaption); });
    m_stateConnection = connect(this, &QMdiSubWindow::windowStateChanged, this,
                                [this](Qt::WindowStates, Qt::WindowStates now) {
                                    m_active = now.testFlag(Qt::WindowActive);
                                });

    Timer1.setInterval(500);
    connect(&Timer1, &QTimer::timeout, this, &ControlPanel::data_statistics_update);
    Timer1.start();
}

ControlPanel::~ControlPanel() {
    // The base class still reports state changes while it is torn down.
    disconnect(m_stateConnection);
}

void ControlPanel::data_statistics_update() {
    const MeasurementStore &store = m_session.store();
    Label1_data->setText(panel::countText(store.dataPoint_count));
    Label2_data->setText(panel::spanText(store));
    const QString alarm = panel::alarmText(store);
    Label_alarm->setText(alarm);
    Label_alarm->setVisible(!alarm.isEmpty());
    Command1->setToolTip(panel::healthText(m_session.health(), QDateTime::currentDateTime()));
}

void ControlPanel::oilName_update() {
    m_session.oilName_update(Text_oilName->text());
}

void ControlPanel::oilName_show(const QString &name) {
    Text_oilName->setText(name);
}

void ControlPanel::Combo1_Validate() {
    m_session.port_select(panel::portFromIndex(Combo1->currentIndex()));
}

void ControlPanel::selectPort(int n) {
    Combo1->setCurrentIndex(n - 1);
    Combo1_Validate();
}

void ControlPanel::Command1_Click() {
    // Pressing the button takes the focus from the list, which validates it.
    Combo1_Validate();
    // The caption follows the session's queryStateChanged().
    if (m_session.queryRunning())
        m_session.query_stop();
    else
        m_session.query_start();
}

void ControlPanel::selectStream(int16_t stream) {
    QCoreApplication::processEvents();
    m_session.dataView_selectStream(stream);
}

void ControlPanel::updatePortTips() {
    const QStringList devices = m_session.link().devicesUpTo(Combo1->count());
    for (int i = 0; i < Combo1->count(); ++i) {
        const QString &device = devices[i];
        Combo1->setItemData(i, panel::portTip(device, portNames_byId(device)), Qt::ToolTipRole);
    }
    Combo1->setToolTip(Combo1->itemData(Combo1->currentIndex(), Qt::ToolTipRole).toString());
}

bool ControlPanel::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == Combo1) {
            Combo1_Validate();
        } else if (watched == Text_oilName) {
            m_session.oilName_leave(Text_oilName->text());
        }
    } else if (event->type() == QEvent::FocusIn && watched == Combo1) {
        updatePortTips(); // a port may have been plugged in meanwhile
    }
    return QMdiSubWindow::eventFilter(watched, event);
}
