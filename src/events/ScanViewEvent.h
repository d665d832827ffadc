#pragma once

#include "core/PageLinks.h"
#include "events/SteppableList.h"
#include "platform/gui/Sheet.h"

#include <memory>
#include <optional>
#include <utility>

namespace Ui {
class ScanViewEvent;
}

namespace quorbel {

/// The details of one event. Presented over a SteppableList, or with steps of its own, it can step
/// to the events beside it.
class ScanViewEvent : public Sheet, public EventSheetLink {
    Q_OBJECT

public:
    explicit ScanViewEvent(QWidget *parent = nullptr);
    ~ScanViewEvent() override;

    void setDict(const Event &event) override { m_dict = event; }
    void setHideButtons(bool hide) override { m_hideButtons = hide; }
    void setSteps(std::shared_ptr<EventSteps> steps) override { m_steps = std::move(steps); }

    void viewDidLoad() override;
    void viewWillAppear() override;

    void setDetails();
    void onUp();
    void onDown();
    void onOK();
    void onCancel();

protected:
    /// Where no text is selected that a field would copy, Copy (Ctrl+C) copies the event as a row
    /// and Ctrl+Shift+C its message, as in the list (see RowCommands).
    void keyPressEvent(QKeyEvent *event) override;

private:
    void copyEvent() const;
    void copyMessage() const;
    [[nodiscard]] SteppableList *list() const;
    /// The row that a step of `distance` rows leads to; nothing when the list ends before.
    [[nodiscard]] std::optional<int> rowBeside(int distance) const;
    [[nodiscard]] bool canStep(int direction) const;
    void step(int direction);
    void setStepping();

    std::unique_ptr<Ui::ScanViewEvent> ui;
    std::shared_ptr<EventSteps> m_steps;  // may have what the event belongs to
    std::optional<Event> m_dict;
    bool m_hideButtons = false;
};

}  // namespace quorbel
