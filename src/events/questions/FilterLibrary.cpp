#include "events/questions/FilterLibrary.h"

#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <QCoreApplication>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>

namespace quorbel {

namespace {

std::filesystem::path keptFile() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return (folder + QStringLiteral("/QuorbelFilters.txt")).toStdString();
}

/// As questions.txt has it, in the user's language; what stands in no question stays as it is.
QString questionText(const std::string &text) {
    return text.empty() ? QString() : QCoreApplication::translate("Questions", text.c_str());
}

std::vector<SavedFilter> readQuestions() {
    QFile file(QStringLiteral(":/questions.txt"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return readFilters(file.readAll().toStdString()).filters;
}

}  // namespace

QString FilterLibrary::nameOf(const SavedFilter &filter) {
    // What the user keeps has a name of the user's own, and says nothing about itself.
    return filter.about.empty() ? toQString(filter.name) : questionText(filter.name);
}

QString FilterLibrary::aboutOf(const SavedFilter &filter) {
    return questionText(filter.about);
}

QString FilterLibrary::groupOf(const SavedFilter &filter) {
    return questionText(filter.group);
}

FilterLibrary::FilterLibrary(QObject *parent) : QObject(parent), m_kept(keptFile()) {
    m_kept.load();
}

const FilterLibrary::Filters &FilterLibrary::questions() const {
    if (m_questions.empty()) {
        m_questions = readQuestions();
    }
    return m_questions;
}

FilterLibrary::Filters::const_iterator FilterLibrary::find(const SavedFilter &filter) const {
    return std::ranges::find_if(kept(), [&](const SavedFilter &other) {
        return other.name == filter.name && other.query == filter.query;
    });
}

bool FilterLibrary::isKept(const SavedFilter &filter) const {
    return find(filter) != kept().end();
}

bool FilterLibrary::hasName(const SavedFilter &filter) const {
    const auto isSame = [&](const SavedFilter &other) {
        return other.name == filter.name && other.query == filter.query;
    };
    return std::ranges::find(kept(), filter.name, &SavedFilter::name) != kept().end() ||
           std::ranges::any_of(questions(), isSame);
}

std::optional<MarkColour> FilterLibrary::markOf(const SavedFilter &filter) const {
    return isKept(filter) ? find(filter)->mark : std::nullopt;
}

template <typename Change>
QString FilterLibrary::change(Change change) {
    const Filters before = kept();
    QString problem = toQString(change());
    if (kept() != before) {
        Q_EMIT changed();
    }
    return problem;
}

QString FilterLibrary::reload() {
    return change([this] { return m_kept.load(); });
}

QString FilterLibrary::keep(const SavedFilter &filter) {
    return change([&] { return m_kept.keep(filter); });
}

QString FilterLibrary::whyNotKept(const EventQuery &query) {
    if (query.texts.size() > SavedFilterLimits::kTexts) {
        return tr("No more than %1 texts can be kept together").arg(SavedFilterLimits::kTexts);
    }
    const QString problem = knownProblem(toQString(quorbel::whyNotKept(query)));
    return problem.isEmpty() ? problem : tr("This filter cannot be kept: %1").arg(problem);
}

QString FilterLibrary::rename(const std::string &from, const std::string &to) {
    return change([&] {
        std::string problem = m_kept.rename(from, to);
        if (problem.empty()) {
            Q_EMIT renamed(from, to);
        }
        return problem;
    });
}

QString FilterLibrary::remove(const std::string &name) {
    return change([&] { return m_kept.remove(name); });
}

QString FilterLibrary::mark(const SavedFilter &filter, std::optional<MarkColour> colour) {
    if (isKept(filter)) {
        return change([&] { return m_kept.mark(filter.name, colour); });
    }
    if (!colour) {
        return {};
    }
    SavedFilter marked = filter;
    marked.mark = colour;
    return change([&] { return m_kept.add({marked}); });
}

QString FilterLibrary::importFrom(const QString &file) {
    return change([&] {
        const FilterFile read = readFilterFile(file.toStdString());
        return read.problem.empty() ? m_kept.add(read.filters) : read.problem;
    });
}

QString FilterLibrary::exportTo(const QString &file) const {
    return toQString(writeFilterFile(file.toStdString(), kept()));
}

MarkColour FilterLibrary::freeColour() const {
    for (std::size_t i = 0; i < kMarkColourNames.size(); ++i) {
        const auto colour = static_cast<MarkColour>(i);
        if (std::ranges::find(kept(), std::optional(colour), &SavedFilter::mark) == kept().end()) {
            return colour;
        }
    }
    return MarkColour::kViolet;
}

}  // namespace quorbel
