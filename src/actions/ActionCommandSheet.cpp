#include "actions/ActionCommandSheet.h"

#include "actions/ActionView.h"

namespace quorbel {

ActionCommandSheet::ActionCommandSheet(Dictionary ActionView::*reaction, QWidget *parent)
    : Sheet(parent), m_reaction(reaction) {}

Dictionary *ActionCommandSheet::reaction() const {
    auto *editor = dynamic_cast<ActionView *>(presenter());
    return editor != nullptr ? &(editor->*m_reaction) : nullptr;
}

void ActionCommandSheet::done(int result) {
    if (auto *editor = dynamic_cast<ActionView *>(presenter())) {
        editor->checkReactions();
    }
    Sheet::done(result);
}

void ActionCommandSheet::onCancel() {
    close();
}

}  // namespace quorbel
