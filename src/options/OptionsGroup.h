#pragma once

#include <QObject>
#include <QWidgetList>

namespace quorbel {

struct OptionsValues;

/// A group of the options page: some controls, and those of the page's values that they edit. It
/// keeps its values between showing and taking them, knows no other group, and no page.
class OptionsGroup : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Shows its values in place of those that it had. No edit.
    virtual void showValues(const OptionsValues &values) = 0;
    /// Puts its values into the page's as they stand.
    virtual void takeValues(OptionsValues &values) const = 0;
    /// What the Tab key visits, in this order.
    [[nodiscard]] virtual QWidgetList tabOrder() const = 0;

Q_SIGNALS:
    /// The user has edited a value.
    void changed();
};

}  // namespace quorbel
