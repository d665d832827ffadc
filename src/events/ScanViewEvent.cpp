#include "events/ScanViewEvent.h"

#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"
#include "platform/gui/RowCopy.h"
#include "ui_ScanViewEvent.h"

#include <QAbstractItemModel>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QKeySequence>

namespace quorbel {

namespace {

QString field(const Event &event, std::string_view key) {
    return toQString(event.value(key).value_or(std::string()));
}

}  // namespace

ScanViewEvent::ScanViewEvent(QWidget *parent)
    : Sheet(parent), ui(std::make_unique<Ui::ScanViewEvent>()) {
    ui->setupUi(this);
}

ScanViewEvent::~ScanViewEvent() = default;

void ScanViewEvent::viewDidLoad() {
    setWindowTitle(tr("Quorbel Event"));
    ui->eventUp->setIcon(lineIcon(QStringLiteral("up")));
    ui->eventDown->setIcon(lineIcon(QStringLiteral("down")));
    ui->eventUp->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Up));
    ui->eventDown->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Down));
    connect(ui->eventUp, &QAbstractButton::clicked, this, &ScanViewEvent::onUp);
    connect(ui->eventDown, &QAbstractButton::clicked, this, &ScanViewEvent::onDown);
    connect(ui->onOK, &QAbstractButton::clicked, this, &ScanViewEvent::onOK);
    ui->onOK->setFocus();
}

void ScanViewEvent::viewWillAppear() {
    // Not when it was loaded: it knows its event and its list only now.
    setDetails();
    if (SteppableList *events = list()) {
        const QAbstractItemModel *rows = &events->rowModel();
        connect(rows, &QAbstractItemModel::rowsInserted, this, &ScanViewEvent::setStepping);
        connect(rows, &QAbstractItemModel::rowsRemoved, this, &ScanViewEvent::setStepping);
        connect(rows, &QAbstractItemModel::modelReset, this, &ScanViewEvent::setStepping);
    }
}

void ScanViewEvent::setDetails() {
    if (m_dict) {
        const TextMarker marker = [this](const QString &text) {
            SteppableList *events = list();
            return events == nullptr ? std::vector<TextRange>() : events->marksIn(text);
        };
        for (LongTextField *field : {ui->eventDate, ui->eventPriority, ui->eventHost}) {
            field->setMarker(marker);
        }
        ui->eventMessage->setMarker(marker);
        ui->eventDate->setWholeText(field(*m_dict, "Date"));
        ui->eventPriority->setWholeText(field(*m_dict, "Priority"));
        ui->eventHost->setWholeText(field(*m_dict, "Host"));
        ui->eventMessage->setWholeText(field(*m_dict, "Message"));
    }
    if (m_hideButtons) {
        ui->eventDown->hide();
        ui->eventUp->hide();
        return;
    }
    setStepping();
}

void ScanViewEvent::setStepping() {
    ui->eventDown->setEnabled(canStep(1));
    ui->eventUp->setEnabled(canStep(-1));
}

SteppableList *ScanViewEvent::list() const {
    return m_hideButtons ? nullptr : dynamic_cast<SteppableList *>(presenter());
}

std::optional<int> ScanViewEvent::rowBeside(int distance) const {
    SteppableList *events = list();
    if (events == nullptr || !m_dict) {
        return std::nullopt;
    }
    // New events clear the selection; then it is the event shown that tells where one is.
    int row = events->selectedRow();
    if (row < 0) {
        row = events->placeOf(*m_dict);
        if (distance > 0 && events->rowOf(*m_dict) < 0) {
            --row;  // an event that has left the list left its row to the next one
        }
    }
    row += distance;
    return row >= 0 && row < events->numberOfRows() ? std::optional(row) : std::nullopt;
}

bool ScanViewEvent::canStep(int direction) const {
    return m_steps ? m_steps->canStep(direction) : rowBeside(direction).has_value();
}

void ScanViewEvent::step(int direction) {
    if (canStep(direction)) {
        m_dict = m_steps ? m_steps->step(direction) : list()->selectRow(*rowBeside(direction));
    }
    setDetails();
}

void ScanViewEvent::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Copy)) {
        copyEvent();
    } else if (event->keyCombination() == (Qt::CTRL | Qt::SHIFT | Qt::Key_C)) {
        copyMessage();
    } else {
        Sheet::keyPressEvent(event);
    }
}

void ScanViewEvent::copyEvent() const {
    QStringList cells;
    for (const LongTextField *field : {ui->eventDate, ui->eventPriority, ui->eventHost}) {
        cells.append(copiedCell(field->wholeText()));
    }
    cells.append(copiedCell(ui->eventMessage->wholeText()));
    QGuiApplication::clipboard()->setText(cells.join(u'\t'));
}

void ScanViewEvent::copyMessage() const {
    QGuiApplication::clipboard()->setText(ui->eventMessage->wholeText());
}

void ScanViewEvent::onUp() {
    step(-1);
}

void ScanViewEvent::onDown() {
    step(1);
}

void ScanViewEvent::onOK() {
    close();
}

void ScanViewEvent::onCancel() {
    onOK();
}

}  // namespace quorbel
