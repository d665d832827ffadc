#include "options/SeverityControls.h"

#include "platform/gui/QtText.h"
#include "settings/NumberStepper.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kColumns = 3;         // of choosers and boxes: the defaults make three equal rows
constexpr int kRemovalColumns = 2;  // of retention times
constexpr int kLongestRemoval = 9999;
constexpr int kTimeWidth = 64;
constexpr int kBoxWidth = 32;  // what a check box takes beside its text

/// Makes one class's control in a grid: named after its key part, as "severity" and "Alerting".
class Maker {
public:
    Maker(const SeverityClass &severity, QGridLayout *grid)
        : m_keyPart(toQString(severity.keyPart)),
          m_label(toQString(severity.label)),
          m_page(grid->parentWidget()) {}

    template <class Control>
    Control *make(const char *before, const char *behind, const char *accessibleName) const {
        auto *control = new Control(m_page);
        control->setObjectName(QLatin1String(before) + m_keyPart + QLatin1String(behind));
        control->setAccessibleName(QString::fromLatin1(accessibleName).arg(m_label));
        return control;
    }
    QCheckBox *makeBox(const char *before, const char *behind, const char *accessibleName) const {
        auto *box = make<QCheckBox>(before, behind, accessibleName);
        box->setText(m_label);
        return box;
    }
    [[nodiscard]] const QString &label() const { return m_label; }

private:
    QString m_keyPart;
    QString m_label;
    QWidget *m_page;
};

QComboBox *makeLevel(const SeverityClass &severity, QGridLayout *grid, int row, int column) {
    const Maker maker(severity, grid);
    auto *level = maker.make<QComboBox>("severity", "", "Rating of events of severity %1");
    for (const SeverityLevel item : {kNormal, kModerate, kSevere}) {
        level->addItem(toQString(severityLevelName(item)));
    }
    auto *label = new QLabel(maker.label());
    label->setBuddy(level);
    grid->addWidget(label, row, 3 * column);
    grid->addWidget(level, row, 3 * column + 1);
    return level;
}

void makeRemoval(SeverityControls &controls, const SeverityClass &severity, QGridLayout *grid,
                 int row, int column) {
    const Maker maker(severity, grid);
    controls.removal = maker.makeBox("removal", "", "Remove events of severity %1 after some time");
    controls.time = maker.make<QLineEdit>("removal", "Time", "How long %1 events are kept");
    controls.stepper = maker.make<QSpinBox>("removal", "Stepper", "Steps of the time for %1");
    controls.units = maker.make<QComboBox>("removal", "Units", "Unit of the time for %1");
    for (const char *unit : {"Minutes", "Hours", "Days", "Weeks", "Months"}) {
        controls.units->addItem(QString::fromLatin1(unit));
    }
    controls.time->setFixedWidth(kTimeWidth);
    controls.time->setAlignment(Qt::AlignRight);
    controls.stepper->setProperty("role", QStringLiteral("stepper"));
    controls.removalTime =
        new NumberStepper(controls.time, controls.stepper, 0, kLongestRemoval, controls.time);

    auto *time = new QHBoxLayout;
    time->setSpacing(2);
    time->addWidget(controls.time);
    time->addWidget(controls.stepper);
    grid->addWidget(controls.removal, row, 4 * column);
    grid->addLayout(time, row, 4 * column + 1);
    grid->addWidget(controls.units, row, 4 * column + 2);
}

/// The width of the longest severity label.
int labelWidth(const QWidget &page) {
    int width = 0;
    for (const SeverityClass &severity : kSeverityClasses) {
        width = std::max(width, page.fontMetrics().horizontalAdvance(toQString(severity.label)));
    }
    return width;
}

/// Gives each of the blocks of `columns` grid columns that hold one class the same part of the
/// line. The first column takes the labels, the last one stays empty.
void spreadBlocks(QGridLayout *grid, int columns, int blocks, int firstWidth) {
    for (int block = 0; block < blocks; ++block) {
        grid->setColumnMinimumWidth(block * columns, firstWidth);
        grid->setColumnStretch((block + 1) * columns - 1, 1);
    }
}

}  // namespace

AllSeverityControls makeSeverityControls(const SeverityGrids &grids) {
    AllSeverityControls all{};
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const SeverityClass &severity = kSeverityClasses[i];
        SeverityControls &controls = all[i];
        const int place = static_cast<int>(i);
        const int row = place / kColumns;
        const int column = place % kColumns;
        controls.level = makeLevel(severity, grids.levels, row, column);
        makeRemoval(controls, severity, grids.removal, place / kRemovalColumns,
                    place % kRemovalColumns);
        controls.popupDisplay =
            Maker(severity, grids.popupDisplay).makeBox("popup", "Display", "Popup for %1 events");
        grids.popupDisplay->addWidget(controls.popupDisplay, row, 2 * column);
        controls.popupPlay =
            Maker(severity, grids.popupPlay).makeBox("popup", "Play", "Sound for %1 events");
        grids.popupPlay->addWidget(controls.popupPlay, row, 2 * column);
    }
    const int width = labelWidth(*grids.levels->parentWidget());
    spreadBlocks(grids.levels, 3, kColumns, width);
    spreadBlocks(grids.removal, 4, kRemovalColumns, width + kBoxWidth);
    spreadBlocks(grids.popupDisplay, 2, kColumns, width + kBoxWidth);
    spreadBlocks(grids.popupPlay, 2, kColumns, width + kBoxWidth);
    return all;
}

}  // namespace quorbel
