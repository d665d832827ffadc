#pragma once

#include "soak/StallWatch.h"
#include "support/FrontEnd.h"

#include <QAbstractButton>
#include <QString>
#include <QWidget>

#include <chrono>
#include <functional>
#include <map>
#include <random>
#include <string>

class QDialog;
class QFileDialog;
class QTableView;

namespace quorbel::soak {

/// Mouse and keyboard of somebody who works the real controls of the window, and lets it go on
/// between two of them. Main thread only.
///
/// Nothing is pressed that a dialog covers. A file panel or a print dialog is confirmed only when
/// it names a file right in the folder that is given here; keys never go anywhere else in it.
class RobotHands {
public:
    RobotHands(testing::FrontEnd &frontEnd, StallWatch &watch, QString folder, unsigned seed);

    /// What the window said in alerts that nobody had asked for, and how often.
    [[nodiscard]] const std::map<std::string, int> &alerts() const { return m_alerts; }

protected:
    using Condition = std::function<bool()>;

    /// Lets the window go on until then; false when that did not come in time.
    static bool waitUntil(const Condition &condition,
                          std::chrono::milliseconds limit = testing::kPatience);
    static void goOnFor(std::chrono::milliseconds time);
    /// For as long as people need between two clicks.
    void think();
    /// A number from the first up to and with the last.
    int any(int first, int last);
    bool sometimes(int outOf) { return any(1, outOf) == 1; }

    /// A control of the page in sight, or of the dialog above it; null where it cannot be used.
    template <typename Control = QWidget>
    Control *find(const char *name) const {
        for (Control *control : top()->findChildren<Control *>(QLatin1String(name))) {
            if (control->isVisible() && control->isEnabled() &&
                control->window() == top()->window()) {
                return control;
            }
        }
        return nullptr;
    }
    /// The dialog that is in front; null for none.
    [[nodiscard]] QDialog *dialog() const;
    /// What can be used now: that dialog, or the main window.
    [[nodiscard]] QWidget *top() const;

    /// Each returns whether it could be done.
    bool click(const char *button);
    bool choose(const char *chooser, int item);
    bool type(const char *field, const QString &text);
    bool clickRow(QTableView *table, int row, Qt::KeyboardModifiers modifiers = {});
    /// Presses the button of that text in the alert that is open, or comes soon.
    bool answer(const QString &button, bool tick = false);
    void key(QWidget *control, Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    /// Saves in the panel that is open, or comes soon, to a new file of the folder.
    bool saveInPanel(const QString &name);
    /// Prints to a new file of the folder in the dialog that is open, or comes soon.
    bool printInDialog(const QString &name);
    /// Closes what stands in front, one after the other.
    void closeDialogs();

    void begin(const QString &activity);
    void step(const QString &what);
    [[nodiscard]] const QString &doing() const { return m_watch.doing(); }
    /// Of a file that the window was to write.
    [[nodiscard]] QString fileInFolder(const QString &name) const;

    testing::FrontEnd &m_frontEnd;
    std::mt19937 m_random;

private:
    bool press(QAbstractButton *button);
    void closeFront();

    StallWatch &m_watch;
    const QString m_folder;
    QString m_activity;
    std::map<std::string, int> m_alerts;
};

}  // namespace quorbel::soak
