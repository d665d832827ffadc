#include "settings/FilterForm.h"

#include "core/Facility.h"
#include "core/SettingsDocument.h"
#include "core/Severity.h"
#include "platform/Text.h"
#include "platform/gui/QtText.h"
#include "ui_FilterForm.h"

#include <QRegularExpressionValidator>

#include <utility>

namespace quorbel {

namespace {

constexpr std::string_view kAny = "Any";

/// A stored mask as its field shows it: as the number that the service takes it for, so text that
/// is none shows as 0.
QString maskText(const Dictionary &record) {
    if (const auto text = settingText(record, "Mask")) {
        return QString::number(integerValue(*text));
    }
    return QString::number(settingInteger(record, "Mask"));
}

QString fieldText(const Dictionary &record, std::string_view key) {
    return toQString(settingText(record, key).value_or(std::string()));
}

/// Selects the item that is equal to the stored value, or none.
void select(QComboBox &chooser, const Dictionary &record, std::string_view key) {
    const auto value = settingText(record, key);
    chooser.setCurrentIndex(value ? chooser.findText(toQString(*value)) : -1);
}

}  // namespace

FilterForm::FilterForm(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::FilterForm>()) {
    ui->setupUi(this);
    static const QRegularExpression wholeNumber(QStringLiteral("[0-9]*"));
    ui->recordMask->setValidator(new QRegularExpressionValidator(wholeNumber, this));
    ui->recordFacility->addItem(toQString(kAny));
    for (const std::string_view facility : kFacilityNames) {
        ui->recordFacility->addItem(toQString(facility));
    }
    ui->recordSeverity->addItem(toQString(kAny));
    for (std::size_t i = 0; i < kUnknownClass; ++i) {
        ui->recordSeverity->addItem(toQString(kSeverityClasses[i].name));
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

void FilterForm::showRecord(const Dictionary &record) {
    ui->recordName->setEnabled(false);
    showText(*ui->recordName, fieldText(record, "Name"));
    showText(*ui->recordIP, fieldText(record, "IP"));
    showText(*ui->recordMessage, fieldText(record, "Message"));
    ui->recordMask->setText(maskText(record));
    select(*ui->recordFacility, record, "Facility");
    select(*ui->recordSeverity, record, "Severity");
}

Dictionary FilterForm::allFields() const {
    return {{"Name", ui->recordName->text().toStdString()},
            {"IP", ui->recordIP->text().toStdString()},
            {"Message", ui->recordMessage->text().toStdString()},
            {"Mask", ui->recordMask->text().toStdString()},
            {"Facility", ui->recordFacility->currentText().toStdString()},
            {"Severity", ui->recordSeverity->currentText().toStdString()}};
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
