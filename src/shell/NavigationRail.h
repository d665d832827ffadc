#pragma once

#include <QObject>

class QFrame;

namespace quorbel {

/// The entries on the window's left side: images with their names, and in a narrow window the
/// images alone.
class NavigationRail : public QObject {
    Q_OBJECT

public:
    /// `frame`, which becomes the parent, holds the entries in a column: tool buttons whose object
    /// names and accessible names say what they are.
    explicit NavigationRail(QFrame &frame);

    [[nodiscard]] bool isNarrow() const { return m_isNarrow; }

Q_SIGNALS:
    void narrowChanged(bool isNarrow);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setNarrow(bool narrow);
    [[nodiscard]] int widthOfWords() const;

    QFrame &m_frame;
    bool m_isNarrow = false;
};

}  // namespace quorbel
