#pragma once

#include <QLabel>

namespace quorbel {

/// A line beside controls that says what they mean or what came of them, in the look of a caption,
/// or of a warning where it tells of something wrong. Whatever it says is shown as plain text, and
/// wraps, within very long words too. Assistive technology hears of a change.
class NoteLabel : public QLabel {
    Q_OBJECT

public:
    explicit NoteLabel(QWidget *parent = nullptr);

    /// An empty text to say nothing.
    void say(const QString &text, bool isWarning = false);
};

}  // namespace quorbel
