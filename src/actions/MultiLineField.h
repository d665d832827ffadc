#pragma once

#include "actions/StoredLines.h"

#include <QPlainTextEdit>
#include <QStringList>

#include <string>
#include <string_view>

namespace quorbel {

/// A field for a stored text of several lines. What the user does not change comes back exactly as
/// it was, line by line; what changed has the line ends that it had, or those around it.
class MultiLineField : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit MultiLineField(QWidget *parent = nullptr);

    void setStoredText(std::string_view text);
    [[nodiscard]] std::string storedText() const;

    void scrollToBeginning();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    [[nodiscard]] QStringList lines() const;

    std::string m_stored;
    QStringList m_shown;  ///< what the field made of it
    StoredLines m_lines;
};

}  // namespace quorbel
