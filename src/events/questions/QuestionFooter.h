#pragma once

#include "core/SavedFilter.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace quorbel {

/// What is said of the filter or question that is selected in a list, and what can be done with it.
class QuestionFooter : public QWidget {
    Q_OBJECT

public:
    explicit QuestionFooter(QWidget *parent);

    struct State {
        bool isKept = false;
        bool isInForce = false;  ///< only what it means is shown already
        bool hasFilter = false;  ///< one is in use
        QString whyNotKept{};    ///< empty when it can be kept
        bool hasKept = false;
        std::optional<MarkColour> mark{};
    };
    /// Null when none is selected.
    void show(const SavedFilter *filter, const State &state);

Q_SIGNALS:
    void showOnlyAsked();
    void markAsked(std::optional<MarkColour> colour);
    void keepAsked();
    void renameAsked();
    void deleteAsked();
    void importAsked();
    void exportAsked();

private:
    QPushButton *addButton(const char *name, const QString &text, const char *role);
    void openMarkMenu();
    void openMoreMenu();

    QLabel *m_name;
    QLabel *m_about;
    QWidget *m_buttons;
    QPushButton *m_keep = nullptr;
    QPushButton *m_more = nullptr;
    QPushButton *m_mark = nullptr;
    QPushButton *m_showOnly = nullptr;
    State m_state;
};

}  // namespace quorbel
