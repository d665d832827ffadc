#include "settings/FilterForm.h"

#include "common/Facility.h"
#include "common/SenderRange.h"
#include "common/SettingsDocument.h"
#include "common/Severity.h"
#include "platform/Text.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/LookProperty.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"
#include "platform/gui/StoredChoice.h"
#include "ui_FilterForm.h"

#include <QLocale>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

constexpr int kNarrowestHost = 60;

QString addressCount(unsigned freeBits) {
    constexpr unsigned kMostWrittenOut = 32;
    if (freeBits == 0) {
        return FilterForm::tr("1 address");
    }
    const bool isWrittenOut = freeBits <= kMostWrittenOut;
    const qint64 addresses = qint64{1} << (isWrittenOut ? freeBits : kMostWrittenOut);
    const QString count =
        isWrittenOut ? countText(addresses) : QStringLiteral("2^") + QString::number(freeBits);
    return FilterForm::tr("%1 addresses", nullptr, pluralNumber(addresses)).arg(count);
}

/// What is said below the fields of the host. No text is longer than the one in the form, for which
/// the sheets have room.
QString meaningOf(const SenderRange &senders) {
    if (senders.ignoresAddress()) {
        return FilterForm::tr("Any host: with a mask of 0, the address is ignored");
    }
    if (senders.isAnybody()) {
        return FilterForm::tr("Any host; 192.168.1.0 / 24 is a whole network");
    }
    if (senders.isNobody()) {
        return FilterForm::tr("Not a valid address: matches no host");
    }
    const QString count = addressCount(senders.freeBits());
    return senders.isMaskTooLong() ? FilterForm::tr("%1; the longest mask for this address is %2")
                                         .arg(count, QString::number(senders.addressBits()))
                                   : count;
}

constexpr std::string_view kAny = "Any";

QString fieldText(const Dictionary &record, std::string_view key) {
    return toQString(settingText(record, key).value_or(std::string()));
}

/// Selects the item that is equal to the stored value, or none.
void select(QComboBox &chooser, const Dictionary &record, std::string_view key) {
    const auto value = settingText(record, key);
    chooser.setCurrentIndex(value ? findStored(chooser, *value) : -1);
}

}  // namespace

FilterForm::FilterForm(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::FilterForm>()) {
    ui->setupUi(this);
    ui->hostMeaning->setTextFormat(Qt::PlainText);  // some of it may be a stranger's
    m_roomForMeaning = ui->hostMeaning->sizeHint().width();
    addStored(*ui->recordFacility, kAny);
    for (const std::string_view facility : kFacilityNames) {
        ui->recordFacility->addItem(toQString(facility), toQString(facility));
    }
    addStored(*ui->recordSeverity, kAny);
    for (std::size_t i = 0; i < kUnknownClass; ++i) {
        addStored(*ui->recordSeverity, kSeverityClasses[i].name);
    }
    connect(ui->recordIP, &QLineEdit::textChanged, this, &FilterForm::sayWhichHosts);
    connect(ui->recordMask, &QLineEdit::textChanged, this, &FilterForm::sayWhichHosts);
    for (const QLineEdit *field : {ui->recordIP, ui->recordMask, ui->recordMessage}) {
        connect(field, &QLineEdit::textChanged, this, &FilterForm::edited);
    }
    for (const QComboBox *chooser : {ui->recordFacility, ui->recordSeverity}) {
        connect(chooser, &QComboBox::currentIndexChanged, this, &FilterForm::edited);
    }
    connect(ui->anyHost, &QAbstractButton::clicked, this, &FilterForm::anyHost);
    connect(ui->anyFacility, &QAbstractButton::clicked, this, &FilterForm::anyFacility);
    connect(ui->anySeverity, &QAbstractButton::clicked, this, &FilterForm::anySeverity);
    connect(ui->anyMessage, &QAbstractButton::clicked, this, &FilterForm::anyMessage);
}

FilterForm::~FilterForm() = default;

void FilterForm::setPrefix(const QString &prefix) {
    ui->recordName->setObjectName(prefix + QStringLiteral("Name"));
    ui->recordIP->setObjectName(prefix + QStringLiteral("IP"));
    ui->recordMask->setObjectName(prefix + QStringLiteral("Mask"));
    ui->recordFacility->setObjectName(prefix + QStringLiteral("Facility"));
    ui->recordSeverity->setObjectName(prefix + QStringLiteral("Severity"));
    ui->recordMessage->setObjectName(prefix + QStringLiteral("Message"));
}

void FilterForm::showNew(const QString &name) {
    ui->recordName->setEnabled(true);
    ui->recordName->setText(name);
    anyHost();
    anyFacility();
    anySeverity();
    anyMessage();
}

void FilterForm::showProposal(const Dictionary &record) {
    showRecord(record);
    ui->recordName->setEnabled(true);
    for (QComboBox *chooser : {ui->recordFacility, ui->recordSeverity}) {
        chooser->setCurrentIndex(std::max(chooser->currentIndex(), 0));
    }
    if (const auto host = settingText(record, "Host")) {
        sayHostIsAName(toQString(*host));
    }
}

void FilterForm::sayHostIsAName(const QString &host) {
    const auto meaning = [](const QString &name) {
        return tr("Any host: only an address can be meant, not “%1”").arg(name);
    };
    const QString name = paintedRow(host);
    const QFontMetrics metrics = ui->hostMeaning->fontMetrics();
    const int room = m_roomForMeaning - metrics.horizontalAdvance(meaning({}));
    const int widest = std::max(room, sizedToFont(kNarrowestHost));
    showMeaning(meaning(metrics.elidedText(name, Qt::ElideRight, widest)), true);
    ui->hostMeaning->setToolTip(QStringLiteral("<p>%1</p>").arg(meaning(name).toHtmlEscaped()));
}

void FilterForm::showRecord(const Dictionary &record) {
    ui->recordName->setEnabled(false);
    showText(*ui->recordName, fieldText(record, "Name"));
    showText(*ui->recordIP, fieldText(record, "IP"));
    showText(*ui->recordMessage, fieldText(record, "Message"));
    ui->recordMask->setText(QString::number(SenderRange::maskOf(record)));
    select(*ui->recordFacility, record, "Facility");
    select(*ui->recordSeverity, record, "Severity");
}

Dictionary FilterForm::allFields() const {
    return {{"Name", ui->recordName->text().toStdString()},
            {"IP", ui->recordIP->text().toStdString()},
            {"Message", ui->recordMessage->text().toStdString()},
            {"Mask", ui->recordMask->text().toStdString()},
            {"Facility", storedChoice(*ui->recordFacility)},
            {"Severity", storedChoice(*ui->recordSeverity)}};
}

FilterForm::Record FilterForm::record() const {
    Record record{.fields = allFields()};
    const auto hasValue = [](const QComboBox &chooser) { return chooser.currentIndex() >= 0; };
    if (!hasValue(*ui->recordSeverity) || !hasValue(*ui->recordFacility)) {
        record.complete = false;
        record.fields.remove("Severity");
    }
    if (!hasValue(*ui->recordFacility)) {
        record.fields.remove("Facility");
    }
    return record;
}

void FilterForm::sayWhichHosts() {
    const std::int64_t mask = integerValue(ui->recordMask->text().toStdString());
    const SenderRange senders(ui->recordIP->text().toStdString(), mask);
    showMeaning(meaningOf(senders),
                senders.isNobody() || senders.ignoresAddress() || senders.isMaskTooLong());
}

void FilterForm::showMeaning(const QString &meaning, bool isOdd) {
    ui->hostMeaning->setText(meaning);
    ui->hostMeaning->setToolTip({});
    setLookProperty(*ui->hostMeaning, "role",
                    isOdd ? QStringLiteral("warning") : QStringLiteral("caption"));
    ui->recordIP->setAccessibleDescription(meaning);
    ui->recordMask->setAccessibleDescription(meaning);
}

void FilterForm::anyHost() {
    ui->recordIP->setText(QStringLiteral("0.0.0.0"));
    ui->recordMask->setText(QStringLiteral("0"));
}

void FilterForm::anyFacility() {
    ui->recordFacility->setCurrentIndex(0);
}

void FilterForm::anySeverity() {
    ui->recordSeverity->setCurrentIndex(0);
}

void FilterForm::anyMessage() {
    ui->recordMessage->setText(QStringLiteral("*"));
}

}  // namespace quorbel
