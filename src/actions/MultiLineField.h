#pragma once

#include <QPlainTextEdit>

#include <string>
#include <string_view>

namespace quorbel {

/// A field for a stored text of several lines. What the user does not change comes back exactly as
/// it was; when the text came with CR LF line ends, changed texts get them too.
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
    [[nodiscard]] QString plainText() const;

    std::string m_stored;
    QString m_shown;  ///< what the field made of it
    bool m_endsLinesWithCrLf = false;
};

}  // namespace quorbel
