#include "core/SavedFilterStore.h"

#include "platform/Files.h"
#include "platform/UniqueFd.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr unsigned kMode = 0600;

using Filters = std::vector<SavedFilter>;

std::string reasonOf(int error) {
    return std::generic_category().message(error);
}

std::string notKept(std::string_view name) {
    return "There is no filter \"" + std::string(name) + "\" any more";
}

auto find(Filters &filters, std::string_view name) {
    return std::ranges::find(filters, name, &SavedFilter::name);
}

bool isTaken(Filters &filters, std::string_view name) {
    return find(filters, name) != filters.end();
}

std::string freeName(Filters &filters, const std::string &name) {
    std::string free = name;
    for (int number = 2; isTaken(filters, free); ++number) {
        free = name + " (" + std::to_string(number) + ")";
    }
    return free;
}

void addTo(Filters &filters, SavedFilter filter) {
    filter.group.clear();
    const bool isThere = std::ranges::any_of(filters, [&](const SavedFilter &kept) {
        return kept.name == filter.name && kept.query == filter.query;
    });
    if (!isThere) {
        filter.name = freeName(filters, filter.name);
        filters.push_back(std::move(filter));
    }
}

/// Where a link leads, so that it stays one.
std::filesystem::path targetOf(const std::filesystem::path &file) {
    std::error_code error;
    const auto target = std::filesystem::canonical(file, error);
    return error ? file : target;
}

/// Returns what is wrong.
std::string readText(const std::filesystem::path &file, std::string &text) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (!error && size > SavedFilterLimits::kBytes) {
        return file.string() + " is too large for a file of filters";
    }
    auto read = readFile(file);
    if (!read) {
        return file.string() + " could not be read";
    }
    text = std::move(*read);
    return {};
}

FilterFile filtersIn(const std::filesystem::path &file, const std::string &text) {
    ReadFilters read = readFilters(text);
    if (!read.isGood()) {
        return {{}, file.string() + ", line " + std::to_string(read.line) + ": " + read.problem};
    }
    return {std::move(read.filters), {}};
}

}  // namespace

FilterFile readFilterFile(const std::filesystem::path &file) {
    std::string text;
    std::string problem = readText(file, text);
    return problem.empty() ? filtersIn(file, text) : FilterFile{{}, std::move(problem)};
}

std::string writeFilterFile(const std::filesystem::path &file, const Filters &filters) {
    const std::string text = writeFilters(filters);
    // What could not be read again would be lost.
    if (const ReadFilters read = readFilters(text); !read.isGood()) {
        return "The filters cannot be kept: " + read.problem;
    }
    if (!replaceFile(targetOf(file), text, kMode)) {
        return file.string() + " could not be written: " + reasonOf(errno);
    }
    return {};
}

std::string SavedFilterStore::load() {
    if (!isThere(m_file)) {
        m_filters.clear();
        m_text.clear();
        return {};
    }
    std::string text;
    if (std::string problem = readText(m_file, text); !problem.empty()) {
        return problem;
    }
    if (text == m_text) {
        return {};  // compiling thousands of expressions takes its time
    }
    FilterFile read = filtersIn(m_file, text);
    if (read.problem.empty()) {
        for (SavedFilter &filter : read.filters) {
            filter.group.clear();
        }
        m_filters = std::move(read.filters);
        m_text = std::move(text);
    }
    return read.problem;
}

std::string SavedFilterStore::change(const Change &change) {
    const std::filesystem::path folder = m_file.parent_path();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const UniqueFd lock(::open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
    if (!lock.isOpen()) {
        return folder.string() + " cannot be used: " + reasonOf(errno);
    }
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        return "Another window is changing its filters. Try again";
    }
    if (std::string problem = load(); !problem.empty()) {
        return problem;
    }
    Filters changed = m_filters;
    std::string problem = change(changed);
    if (problem.empty() && changed != m_filters) {
        problem = writeFilterFile(m_file, changed);
    }
    if (problem.empty()) {
        m_filters = std::move(changed);
    }
    return problem;
}

std::string SavedFilterStore::keep(const SavedFilter &filter) {
    return change([&](Filters &filters) {
        const auto kept = find(filters, filter.name);
        if (kept != filters.end()) {
            *kept = filter;
        } else {
            filters.push_back(filter);
        }
        return std::string();
    });
}

std::string SavedFilterStore::add(const Filters &more) {
    return change([&](Filters &filters) {
        for (const SavedFilter &filter : more) {
            addTo(filters, filter);
        }
        return std::string();
    });
}

std::string SavedFilterStore::rename(std::string_view from, const std::string &to) {
    return change([&](Filters &filters) {
        if (from != to && isTaken(filters, to)) {
            return "There is a filter \"" + to + "\" already";
        }
        const auto kept = find(filters, from);
        if (kept == filters.end()) {
            return notKept(from);
        }
        kept->name = to;
        return std::string();
    });
}

std::string SavedFilterStore::remove(std::string_view name) {
    return change([&](Filters &filters) {
        std::erase_if(filters, [&](const SavedFilter &filter) { return filter.name == name; });
        return std::string();
    });
}

std::string SavedFilterStore::mark(std::string_view name, std::optional<MarkColour> colour) {
    return change([&](Filters &filters) {
        const auto kept = find(filters, name);
        if (kept == filters.end()) {
            return notKept(name);
        }
        kept->mark = colour;
        return std::string();
    });
}

}  // namespace quorbel
