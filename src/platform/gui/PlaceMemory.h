#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace quorbel {

/// Remembers across starts where a window was, and how large, when it was seen last (see
/// remember()). What is on no screen any more is moved onto one, and what is no place is passed
/// over; where the desktop alone decides on places, as under Wayland, only the size is taken up.
class PlaceMemory : public QObject {
    Q_OBJECT

public:
    /// Gives `window`, which becomes the parent, what is remembered by `name`. Before it is shown.
    PlaceMemory(QWidget &window, const QString &name);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget &m_window;
    const QString m_key;
};

}  // namespace quorbel
