#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace quorbel {

/// What a panel that chooses a file shows.
struct FilePanelRequest {
    QString message;         ///< the instruction above the list, and the window title's place
    QStringList extensions;  ///< the only file types that can be chosen, without the dot
    QString folder;          ///< where it starts; where that does not exist, the user's home
    QString name = {};       ///< offered at first, in a panel that saves; its type is chosen
    bool save = false;       ///< names a file to write, rather than one that exists
};

/// Opens a window-modal file panel over `parent`'s window and returns at once. `onChosen` runs once
/// with the full path when the user confirms a file, and not at all when the panel is cancelled. A
/// name typed without one of the extensions gets the chosen one. Saving over an existing file asks
/// first, with an alert whose buttons are "Replace" and "Cancel". A folder that does not exist, and
/// a file to open that does not, are refused with an alert, and the panel stays.
///
/// Nothing can be deleted or moved in a panel; folders can be made where a file is to be saved. The
/// panel is a QFileDialog (not the desktop's own), named "filePanel".
void openFilePanel(QWidget *parent, const FilePanelRequest &request,
                   std::function<void(const QString &path)> onChosen);

}  // namespace quorbel
