#pragma once

#include "platform/Value.h"

#include <QWidget>

#include <memory>

class QComboBox;
class QLineEdit;

namespace Ui {
class FilterForm;
}

namespace quorbel {

/// The form of a filter record: name, host address with mask, facility, severity and message, each
/// but the name with a button that stands for "any". Filters and actions are edited with it. Any
/// text is taken in every field; "hostMeaning" says which hosts address and mask stand for.
class FilterForm : public QWidget {
    Q_OBJECT

public:
    explicit FilterForm(QWidget *parent = nullptr);
    ~FilterForm() override;

    /// Names the six controls after what is edited: "filter" gives "filterName", "filterIP",
    /// "filterMask", "filterFacility", "filterSeverity", "filterMessage".
    void setPrefix(const QString &prefix);

    /// Shows a new record that holds for every event; its name can be changed.
    void showNew(const QString &name);
    /// Shows a new record that begins with these values. A facility and a severity that are none
    /// become any. A "Host" beside them is a name that no address stands for: it is said that any
    /// host is meant instead.
    void showProposal(const Dictionary &record);
    /// Shows a record to be edited; its name stays as it is.
    void showRecord(const Dictionary &record);

    struct Record {
        /// "Name", "IP", "Message", "Mask", "Facility", "Severity", in this order.
        Dictionary fields;
        /// False when a chooser has no value: the record ends before its key.
        bool complete = true;
    };
    [[nodiscard]] Record record() const;
    /// All six fields in this order; a chooser without a value gives the empty text.
    [[nodiscard]] Dictionary allFields() const;

    // The operations of the four buttons.
    void anyHost();
    void anyFacility();
    void anySeverity();
    void anyMessage();

Q_SIGNALS:
    /// A field other than the name shows something else than before.
    void edited();

private:
    void sayWhichHosts();
    void sayHostIsAName(const QString &host);
    void showMeaning(const QString &meaning, bool isOdd);

    std::unique_ptr<Ui::FilterForm> ui;
    int m_roomForMeaning = 0;  // in pixels
};

}  // namespace quorbel
