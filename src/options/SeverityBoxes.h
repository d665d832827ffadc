#pragma once

#include "options/SeverityControls.h"

#include <QObject>
#include <QWidgetList>

#include <cstddef>
#include <string>
#include <vector>

namespace quorbel {

/// One check box a severity, and the list of the labels of those that are checked, as it is stored:
/// in the order in which they were checked. Labels that belong to no box stay in a list that is
/// shown.
class SeverityBoxes : public QObject {
    Q_OBJECT

public:
    /// The boxes outlive the object.
    SeverityBoxes(const BoxControls &boxes, QObject *parent);

    [[nodiscard]] const std::vector<std::string> &labels() const { return m_labels; }
    [[nodiscard]] QWidgetList tabOrder() const;

    // No edits.
    void setLabels(const std::vector<std::string> &labels);
    void checkAll();
    void uncheckAll();
    void setEnabled(bool enabled);

    /// Follows one box; an edit.
    void take(std::size_t severity);

Q_SIGNALS:
    void changed();

private:
    BoxControls m_boxes;
    std::vector<std::string> m_labels;
};

}  // namespace quorbel
