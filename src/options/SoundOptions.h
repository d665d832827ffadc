#pragma once

#include "options/OptionsGroup.h"
#include "options/SeverityControls.h"

#include <cstddef>
#include <optional>
#include <string>

class QLineEdit;
class QPushButton;

namespace quorbel {

class NoteLabel;
class SeverityBoxes;

/// Which severities play a sound, and which sound.
class SoundOptions : public OptionsGroup {
    Q_OBJECT

public:
    struct Controls {
        QCheckBox *popupEventsPlay;
        QLineEdit *popupSoundFile;
        QPushButton *popupSoundBrowse;
        QPushButton *popupSoundTry;
        NoteLabel *popupSoundNote;
        BoxControls boxes;
    };

    /// The controls outlive the group. `page` is what the file panel opens over.
    SoundOptions(const Controls &controls, QWidget *page);

    void showValues(const OptionsValues &values) override;
    void takeValues(OptionsValues &values) const override;
    [[nodiscard]] QWidgetList tabOrder() const override;

    /// Follows `popupEventsPlay`. Without a sender it only brings the controls in line.
    void popupSound(const QObject *sender = nullptr);
    void popupEventsPlay(std::size_t severity);
    void popupSoundBrowse();

private:
    void takeSound(const QString &path);

    Controls m;
    QWidget *m_page;
    SeverityBoxes *m_boxes;
    std::optional<std::string> m_popupSound;
};

}  // namespace quorbel
