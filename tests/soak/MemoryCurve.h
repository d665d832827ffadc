#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quorbel::soak {

/// What a process took over time.
class MemoryCurve {
public:
    void add(double mebibytes) { m_samples.push_back(mebibytes); }
    [[nodiscard]] std::size_t size() const { return m_samples.size(); }
    [[nodiscard]] double most() const {
        return m_samples.empty() ? 0 : *std::ranges::max_element(m_samples);
    }
    /// In MiB, of a part of the time: its quarters are 0 to 3.
    [[nodiscard]] double median(std::size_t quarter) const {
        const auto at = [this](std::size_t part) {
            return m_samples.begin() + static_cast<std::ptrdiff_t>(m_samples.size() * part / 4);
        };
        std::vector<double> samples(at(quarter), at(quarter + 1));
        std::ranges::sort(samples);
        return samples.empty() ? 0 : samples[samples.size() / 2];
    }
    /// Over the second half: what its later part took more than its earlier one, of the latter.
    [[nodiscard]] double growth() const { return median(2) > 0 ? median(3) / median(2) - 1 : 0; }

private:
    std::vector<double> m_samples;
};

}  // namespace quorbel::soak
