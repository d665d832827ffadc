#pragma once

#include <QFrame>

namespace quorbel {

class HomePageLink;

/// The bar of the home page: from the colour of the page's overall rating to white.
class HomeViewBar : public QFrame {
    Q_OBJECT

public:
    explicit HomeViewBar(QWidget *parent = nullptr);

    /// The page whose rating is drawn; outlives the bar. Without one, the bar draws Normal.
    void setPage(const HomePageLink *page) { m_page = page; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const HomePageLink *m_page = nullptr;
};

}  // namespace quorbel
