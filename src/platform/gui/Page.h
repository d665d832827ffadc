#pragma once

#include <QHideEvent>
#include <QShowEvent>
#include <QWidget>

namespace quorbel {

/// The life cycle that every page and sheet follows. Subclasses override what they need.
class PageLifeCycle {
public:
    virtual ~PageLifeCycle() = default;

    /// Once, after the controller was made by the Storyboard.
    virtual void viewDidLoad() {}
    /// Each time before it is shown: when its tab is selected, and when its window is shown again.
    virtual void viewWillAppear() {}
    /// Each time after it was shown.
    virtual void viewDidAppear() {}
    /// Each time before it is hidden.
    virtual void viewWillDisappear() {}

protected:
    PageLifeCycle() = default;
    PageLifeCycle(const PageLifeCycle &) = default;
    PageLifeCycle &operator=(const PageLifeCycle &) = default;

    // What the show and hide events of `view`, which is this same object, come down to. Those that
    // the window system sends for a minimised window are no appearances.
    void handleShow(QWidget *view, const QShowEvent &event);
    void handleHide(const QHideEvent &event);

private:
    unsigned m_appearances = 0;  ///< tells a queued viewDidAppear whether it is out of date
};

/// A page of the tab container.
class Page : public QWidget, public PageLifeCycle {
    Q_OBJECT

public:
    explicit Page(QWidget *parent = nullptr);

    /// Whether the page's tab is selected and its window is visible.
    [[nodiscard]] bool isPageOnScreen() const { return isVisible(); }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    /// What pages do first when their view has been loaded.
    void setWhiteBackground();
};

}  // namespace quorbel
