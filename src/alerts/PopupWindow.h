#pragma once

#include "platform/gui/Page.h"

#include <QWidget>

namespace quorbel {

class PopupView;
class Storyboard;

/// The alert popup's window. It stands above other windows and never takes the keyboard focus; its
/// content keeps its size, so that a lower window shows the upper part of it.
///
/// Not reused: it deletes itself when it closes. The storyboard outlives it.
class PopupWindow final : public QWidget, public PageLifeCycle {
    Q_OBJECT

public:
    explicit PopupWindow(const Storyboard &storyboard);

    void viewDidLoad() override;
    PopupView &contentView() { return *m_view; }

private:
    PopupView *m_view;
};

}  // namespace quorbel
