#include "options/SeverityControls.h"

#include "platform/gui/BlockFlow.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"
#include "settings/NumberStepper.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

#include <algorithm>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::SeverityControls)
};

constexpr int kColumns = 3;         // of choosers and boxes: the defaults make three equal rows
constexpr int kRemovalColumns = 2;  // of retention times
constexpr int kLongestRemoval = 9999;
constexpr int kBoxWidth = 32;  // what a check box takes beside its text
constexpr int kGap = 10;
constexpr int kBlockGap = 20;
constexpr int kRowGap = 8;

/// Makes one class's control of a page: named after its key part, as "severity" and "Alerting".
class Maker {
public:
    Maker(const SeverityClass &severity, QWidget *page)
        : m_keyPart(toQString(severity.keyPart)),
          m_label(knownName(severity.label)),
          m_page(page) {}

    template <class Control>
    Control *make(const char *before, const char *behind, const QString &accessibleName) const {
        auto *control = new Control(m_page);
        control->setObjectName(QLatin1String(before) + m_keyPart + QLatin1String(behind));
        control->setAccessibleName(accessibleName.arg(m_label));
        return control;
    }
    QCheckBox *makeBox(const char *before, const char *behind,
                       const QString &accessibleName) const {
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

/// The width of the longest severity label, and of what stands before it.
int labelWidth(const QWidget &page, int before) {
    int width = 0;
    for (const SeverityClass &severity : kSeverityClasses) {
        width = std::max(width, page.fontMetrics().horizontalAdvance(knownName(severity.label)));
    }
    return width + before;
}

/// A row of one class's controls, whose first is as wide in each of them.
QHBoxLayout *addBlock(BlockFlow &flow, QWidget *first, int firstWidth) {
    auto *block = new QHBoxLayout;
    block->setSpacing(kGap);
    flow.addBlock(block);
    block->addWidget(first);
    first->setMinimumWidth(firstWidth);
    return block;
}

BlockFlow &addFlow(QBoxLayout &place, int columns) {
    auto *flow = new BlockFlow(columns, kBlockGap, kRowGap);
    place.addLayout(flow);
    return *flow;
}

RemovalControls makeRemoval(const Maker &maker) {
    RemovalControls controls{};
    controls.removal = maker.makeBox("removal", "", Texts::tr("Remove %1 events after some time"));
    controls.time =
        maker.make<QLineEdit>("removal", "Time", Texts::tr("How long %1 events are kept"));
    controls.stepper = maker.make<QSpinBox>("removal", "Stepper",
                                            Texts::tr("How long %1 events are kept, stepper"));
    controls.units =
        maker.make<QComboBox>("removal", "Units", Texts::tr("Unit of time for %1 events"));
    controls.units->addItems({Texts::tr("Minutes"), Texts::tr("Hours"), Texts::tr("Days"),
                              Texts::tr("Weeks"), Texts::tr("Months")});
    controls.time->setProperty("role", QStringLiteral("number"));
    controls.time->setAlignment(Qt::AlignRight);
    controls.stepper->setProperty("role", QStringLiteral("stepper"));
    controls.removalTime =
        new NumberStepper(controls.time, controls.stepper, 0, kLongestRemoval, controls.time);
    return controls;
}

BoxControls makeBoxes(QBoxLayout &place, const char *behind, const QString &accessibleName) {
    BoxControls all{};
    BlockFlow &flow = addFlow(place, kColumns);
    QWidget *page = place.parentWidget();
    const int width = labelWidth(*page, sizedToFont(kBoxWidth));
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        all[i] = Maker(kSeverityClasses[i], page).makeBox("popup", behind, accessibleName);
        addBlock(flow, all[i], width)->addStretch();
    }
    return all;
}

}  // namespace

LevelControls makeLevelControls(QBoxLayout &place) {
    LevelControls all{};
    BlockFlow &flow = addFlow(place, kColumns);
    QWidget *page = place.parentWidget();
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const Maker maker(kSeverityClasses[i], page);
        auto *level = maker.make<QComboBox>("severity", "", Texts::tr("Rating of %1 events"));
        for (const SeverityLevel item : {kNormal, kModerate, kSevere}) {
            level->addItem(knownName(severityLevelName(item)));
        }
        auto *label = new QLabel(maker.label());
        label->setBuddy(level);
        QHBoxLayout *block = addBlock(flow, label, labelWidth(*page, 0));
        block->addWidget(level);
        block->addStretch();
        all[i] = level;
    }
    return all;
}

AllRemovalControls makeRemovalControls(QBoxLayout &place) {
    AllRemovalControls all{};
    BlockFlow &flow = addFlow(place, kRemovalColumns);
    QWidget *page = place.parentWidget();
    const int firstWidth = labelWidth(*page, sizedToFont(kBoxWidth));
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        all[i] = makeRemoval(Maker(kSeverityClasses[i], page));
        QHBoxLayout *block = addBlock(flow, all[i].removal, firstWidth);
        auto *time = new QHBoxLayout;
        time->setSpacing(2);
        time->addWidget(all[i].time);
        time->addWidget(all[i].stepper);
        block->addLayout(time);
        block->addWidget(all[i].units);
        block->addStretch();
    }
    return all;
}

BoxControls makeDisplayControls(QBoxLayout &place) {
    return makeBoxes(place, "Display", Texts::tr("Popup for %1 events"));
}

BoxControls makePlayControls(QBoxLayout &place) {
    return makeBoxes(place, "Play", Texts::tr("Sound for %1 events"));
}

}  // namespace quorbel
