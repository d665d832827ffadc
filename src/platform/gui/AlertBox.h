#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace quorbel {

/// What an informational alert shows. Its window title is always "Quorbel".
struct AlertRequest {
    QString message;
    QString informativeText;
    QString checkBox;     ///< the title of a check box, unticked at first; empty for none
    QStringList buttons;  ///< in order, the first is the default; empty for a single default button
};

struct AlertAnswer {
    int button = -1;  ///< index into the request's buttons (0 for the single one); -1 when the box
                      ///< was dismissed without pressing any
    bool checked = false;
};

/// Opens a window-modal alert over `parent`'s window and returns at once. `onAnswer` runs once, on
/// the main thread, after the box has closed; not at all when `parent` is destroyed before.
///
/// The box is a QMessageBox whose buttons and check box carry their titles, named "alertBox";
/// buttons are named "alertButton0", "alertButton1", the check box "alertCheckBox".
void openAlert(QWidget *parent, const AlertRequest &request,
               std::function<void(const AlertAnswer &)> onAnswer);

}  // namespace quorbel
