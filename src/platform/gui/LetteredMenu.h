#pragma once

#include <QHash>
#include <QMenu>

namespace quorbel {

/// A menu all of whose entries have letters, as long as those of their texts last: those that a
/// text marks itself ("&Copy"), and for the others one of their own. Their texts remain what they
/// are. Letters are given whenever it opens.
class LetteredMenu : public QMenu {
    Q_OBJECT

public:
    explicit LetteredMenu(QWidget *parent = nullptr);
    LetteredMenu(const QString &title, QWidget *parent);

    /// In upper case; null where none was left for it. Known since the menu opened.
    [[nodiscard]] QChar letterOf(const QAction &entry) const;

protected:
    void initStyleOption(QStyleOptionMenuItem *option, const QAction *action) const override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void chooseEntryLetters();
    [[nodiscard]] QAction *entryOf(QChar letter) const;

    QHash<const QAction *, qsizetype> m_places;
};

}  // namespace quorbel
