#pragma once

#include "platform/gui/Sheet.h"

namespace quorbel {

class ActionView;
class Dictionary;

/// What the sheets that edit one reaction of an action have in common. They are presented over the
/// action's editor and work on its dictionaries; however such a sheet closes, the editor's check
/// boxes show afterwards which reactions are on.
class ActionCommandSheet : public Sheet {
    Q_OBJECT

public:
    void done(int result) override;

    void onCancel();

protected:
    /// `reaction` is the dictionary of the editor that the sheet edits.
    explicit ActionCommandSheet(Dictionary ActionView::*reaction, QWidget *parent = nullptr);

    /// The editor's dictionary; null when the sheet was not presented over an editor.
    [[nodiscard]] Dictionary *reaction() const;

private:
    Dictionary ActionView::*m_reaction;
};

}  // namespace quorbel
