#pragma once

#include "core/ServiceState.h"
#include "shell/ServiceTexts.h"

#include <QList>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <optional>

class QBoxLayout;
class QLabel;
class QPushButton;

namespace quorbel {

class AppDelegate;

/// Says in the navigation whether the service is there, when the last event came, and what went
/// wrong. Asks for it once a second while it is seen. In a narrow navigation an image says whether
/// all is well, and its tip the rest.
class ServiceLine : public QWidget {
    Q_OBJECT

public:
    /// `delegate` outlives this.
    ServiceLine(AppDelegate &delegate, QWidget *parent);
    ~ServiceLine() override;

    void setNarrow(bool isNarrow);

Q_SIGNALS:
    void detailsAsked();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    struct Line {
        QWidget *row;
        QLabel *sign;
        QLabel *text;
    };
    static constexpr qsizetype kMostLines = 10;

    void makeHead(QBoxLayout &column);
    void makeLines(QBoxLayout &column);
    void makeButtons(QBoxLayout &column);
    void refresh();
    [[nodiscard]] ServiceFacts facts() const;
    void show(const ServiceTexts &texts);
    void showLines(const ServiceTexts &texts);
    void followContact();
    void fit();

    AppDelegate &m_delegate;
    std::optional<ServiceState::Watch> m_watch;
    std::optional<StatusOutcome> m_outcome;  // the last that was known
    std::optional<std::int64_t> m_lostAt;
    TestPort m_testPort = TestPort::kService;
    bool m_isNarrow = false;
    std::optional<bool> m_shownContact;
    QWidget *m_head = nullptr;
    QLabel *m_image = nullptr;
    QLabel *m_title = nullptr;
    QList<Line> m_lines;
    QPushButton *m_details = nullptr;
    QPushButton *m_button = nullptr;
    QTimer m_timer;
};

}  // namespace quorbel
