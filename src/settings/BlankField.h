#pragma once

#include <QWidget>

namespace quorbel {

/// A control without any appearance that takes the keyboard focus when a page or sheet has
/// appeared, so that no text field starts in editing. Tab goes on from it to the first real
/// control. It stands in front of that control in the form, outside of every layout.
class BlankField : public QWidget {
    Q_OBJECT

public:
    explicit BlankField(QWidget *parent = nullptr);
};

}  // namespace quorbel
