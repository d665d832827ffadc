#pragma once

#include <QIcon>
#include <QWidget>

class QLabel;

namespace quorbel {

/// What saving a form would mean, in a line and one of more below it. A consequence that somebody
/// should think about is bold and has a sign. Where nothing is said there is room for both lines
/// already, so that nothing moves.
class ConsequenceLine : public QWidget {
    Q_OBJECT

public:
    explicit ConsequenceLine(QWidget *parent = nullptr);

    /// In front of a consequence that needs no warning; without, nothing stands there.
    void setCalmSign(const QIcon &sign) { m_calmSign = sign; }

    /// Both empty to say nothing.
    void say(const QString &consequence, const QString &more = {}, bool isWarning = false);

protected:
    bool event(QEvent *event) override;

private:
    QIcon m_calmSign;
    QLabel *m_sign;
    QLabel *m_consequence;
    QLabel *m_more;
};

}  // namespace quorbel
