#pragma once

#include <QObject>

class QScrollArea;

namespace quorbel {

/// Breaks the long texts of a scrolled form into lines as soon as they would make it scroll
/// sideways, as they do in a language that needs more room. Where all fits, nothing changes. It is
/// the area's.
class WrappedTexts : public QObject {
public:
    explicit WrappedTexts(QScrollArea &area);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void wrapIfTooWide();

    QScrollArea &m_area;
    int m_share = 0;  ///< of the width, that a text must need for a break
};

}  // namespace quorbel
