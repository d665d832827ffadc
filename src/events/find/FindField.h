#pragma once

#include "core/EventQuery.h"

#include <QFrame>
#include <QList>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace quorbel {

class FindChip;

/// The field in which texts are asked for: what is typed, and before it those that Return has made
/// conditions of their own. It grows with them; where there is no room, they become a number.
class FindField : public QFrame {
    Q_OBJECT

public:
    explicit FindField(QWidget *parent);

    /// The conditions, and what is typed as the last of them.
    [[nodiscard]] std::vector<TextCondition> texts() const;
    /// Whether what is typed is one.
    [[nodiscard]] bool isExpression() const { return typed().pattern.isExpression; }
    /// Of each of them.
    [[nodiscard]] QStringList names() const;
    void remove(std::size_t text);
    void add(const TextCondition &condition);
    void clear();
    /// Empties what is typed; false when it is empty already.
    bool clearTyped();
    /// Puts the cursor there and selects what is typed.
    void open();
    /// Shows that what is typed is wrong, and why; an empty text when it is not.
    void showError(const QString &error);

    void setCompact(bool isCompact);
    /// Whether it takes all the width that there is.
    void setUnlimited(bool isUnlimited);
    /// For all conditions, and some room to type.
    [[nodiscard]] int wantedWidth() const;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPushButton *makeToggle(const char *name, const QString &text, const QString &accessibleName,
                            const QString &toolTip);
    [[nodiscard]] TextCondition typed() const;
    void keepTyped();
    void insertChip(const TextCondition &condition);
    void removeChip(FindChip *chip);
    void dropChip(FindChip *chip);
    void arrange();
    void openMenu();
    void showState();

    QHBoxLayout *m_row;
    QList<FindChip *> m_chips;
    QPushButton *m_number;
    QLineEdit *m_text;
    QLabel *m_warning;
    QPushButton *m_case;
    QPushButton *m_regex;
    QString m_error;
    bool m_isCompact = false;
    bool m_isUnlimited = false;
};

}  // namespace quorbel
