#pragma once

#include "alerts/PopupCondition.h"
#include "core/AppState.h"
#include "core/Event.h"
#include "platform/gui/Page.h"

#include <QFrame>
#include <QPointer>
#include <QTimer>
#include <QVariantAnimation>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Ui {
class PopupView;
}

namespace quorbel {

class PopupDismissal;
class PopupHold;
class PopupQueue;
class Storyboard;

/// The alert popup's content: one event. When it appears, its window grows upward from the bottom
/// of the screen, stays for `popupTime` seconds, shrinks and closes. The user may close it before,
/// hold it open with the pointer, and skip what waits behind it.
class PopupView final : public QFrame, public PageLifeCycle {
    Q_OBJECT

public:
    explicit PopupView(const Storyboard &storyboard, QWidget *parent = nullptr);
    ~PopupView() override;
    PopupView(const PopupView &) = delete;
    PopupView &operator=(const PopupView &) = delete;

    // Set before it is shown.
    std::int64_t popupTime = 0;
    std::optional<Event> popupDict;

    void viewDidLoad() override;
    void viewWillAppear() override;
    void viewWillDisappear() override;
    void setDetails();
    void popupTimeout();
    void popupAbout();

    /// What to signal when this popup's window closes, however it comes to that. Set before it is
    /// shown; serves this popup only.
    void setCondition(std::shared_ptr<PopupCondition> condition) {
        m_condition = std::move(condition);
    }
    [[nodiscard]] std::shared_ptr<PopupCondition> condition() const { return m_condition; }
    /// What waits behind it; outlives the popup. Without one, nothing does.
    void setQueue(PopupQueue *queue) { m_queue = queue; }
    /// How this popup rates its event (SeverityLevel, or what the preferences say instead).
    [[nodiscard]] std::int64_t level() const;

Q_SIGNALS:
    /// The link was followed. The sheet lives on its own and deletes itself when it closes.
    void eventSheetOpened(QWidget *sheet);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    [[nodiscard]] std::string field(const char *key) const;
    void setWindowHeight(int height);
    void animateTo(int height);
    void slideEnded();
    void connectUser();
    void setHeld(bool isHeld);
    void showWaiting();
    void skipAll();
    [[nodiscard]] int roomBesideHeader() const;
    void showDate();

    const Storyboard &m_storyboard;
    std::unique_ptr<Ui::PopupView> ui;
    SeverityLevels m_levels;
    std::shared_ptr<PopupCondition> m_condition;
    QRect m_openPlace;  ///< the window's place when it stands fully open
    bool m_closing = false;
    bool m_wasOpen = false;  ///< fully, once
    int m_timeLeft = 0;      ///< while it is held open, in milliseconds
    QVariantAnimation m_slide;
    QTimer m_timeout{this};
    QTimer m_recount{this};
    PopupQueue *m_queue = nullptr;
    PopupHold *m_hold = nullptr;
    PopupDismissal *m_dismissal = nullptr;
    QPointer<QWidget> m_eventSheet;
};

}  // namespace quorbel
