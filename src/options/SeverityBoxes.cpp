#include "options/SeverityBoxes.h"

#include <QCheckBox>

#include <algorithm>

namespace quorbel {

namespace {

/// As it is stored, whatever the user's language.
std::string labelOf(std::size_t severity) {
    return std::string(kSeverityClasses[severity].label);
}

bool contains(const std::vector<std::string> &labels, const std::string &label) {
    return std::ranges::find(labels, label) != labels.end();
}

}  // namespace

SeverityBoxes::SeverityBoxes(const BoxControls &boxes, QObject *parent)
    : QObject(parent), m_boxes(boxes) {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        connect(m_boxes[i], &QAbstractButton::clicked, this, [this, i] { take(i); });
    }
}

QWidgetList SeverityBoxes::tabOrder() const {
    return {m_boxes.begin(), m_boxes.end()};
}

void SeverityBoxes::setLabels(const std::vector<std::string> &labels) {
    m_labels = labels;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        m_boxes[i]->setChecked(contains(m_labels, labelOf(i)));
    }
}

void SeverityBoxes::checkAll() {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        m_boxes[i]->setChecked(true);
        m_labels.push_back(labelOf(i));
    }
}

void SeverityBoxes::uncheckAll() {
    for (QCheckBox *box : m_boxes) {
        box->setChecked(false);
    }
    m_labels.clear();
}

void SeverityBoxes::setEnabled(bool enabled) {
    for (QCheckBox *box : m_boxes) {
        box->setEnabled(enabled);
    }
}

void SeverityBoxes::take(std::size_t severity) {
    const std::string label = labelOf(severity);
    if (!m_boxes[severity]->isChecked()) {
        std::erase(m_labels, label);
    } else if (!contains(m_labels, label)) {
        m_labels.push_back(label);
    }
    Q_EMIT changed();
}

}  // namespace quorbel
