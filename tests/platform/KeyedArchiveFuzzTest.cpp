#include "Fuzz.h"
#include "platform/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

std::vector<std::string> corpus() {
    std::vector<std::string> all;
    const std::filesystem::path folder = std::filesystem::path(QUORBEL_TEST_DATA) / "keyed";
    for (const std::filesystem::path &place : {folder, folder / "malformed"}) {
        for (const std::string &name : listFolder(place)) {
            const std::optional<std::string> bytes = readFile(place / name);
            // The largest ones are one long text.
            if (hasExtension(name, "bin") && bytes && bytes->size() < 60000) {
                all.push_back(*bytes);
            }
        }
    }
    return all;
}

class Mutator {
public:
    explicit Mutator(std::uint64_t seed) : m_random(seed) {}

    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }

    void mutate(std::string &bytes) {
        // Most damage is to the objects alone: a reader is soon done with a damaged frame.
        const bool isFrameKept = below(8) != 0;
        for (std::size_t count = 1 + below(4); count > 0 && !bytes.empty(); --count) {
            if (isFrameKept) {
                damageObjects(bytes);
            } else {
                damageAnything(bytes);
            }
        }
    }

private:
    /// Changes bytes between the header and the offset table, where the trailer says that it is.
    void damageObjects(std::string &bytes) {
        static constexpr unsigned char kTelling[] = {0x00, 0x01, 0x08, 0x0F, 0x13, 0x14,
                                                     0x33, 0x4F, 0x5F, 0x6F, 0x7F, 0x80,
                                                     0xA1, 0xAF, 0xD2, 0xFF};
        constexpr std::size_t kHeader = 8;
        std::size_t table = 0;
        for (const char byte :
             bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), 4))) {
            table = table << 8 | static_cast<unsigned char>(byte);
        }
        const std::size_t end = table > kHeader && table < bytes.size() ? table : bytes.size();
        const std::size_t at = std::min(kHeader + below(end - std::min(end, kHeader)), end - 1);
        switch (below(5)) {
            case 0:
                bytes[at] = static_cast<char>(m_random());
                break;
            case 1:
                bytes[at] = static_cast<char>(kTelling[below(sizeof kTelling)]);
                break;
            case 2:
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
                break;
            case 3:
                bytes[at] = static_cast<char>(bytes[at] + (below(2) == 0 ? 1 : -1));
                break;
            default:
                bytes[at] = bytes[below(end)];
                break;
        }
    }

    void damageAnything(std::string &bytes) {
        const std::size_t at = below(bytes.size());
        switch (below(4)) {
            case 0:
                bytes.erase(at, 1 + below(8));
                break;
            case 1:
                bytes.insert(at, bytes.substr(below(bytes.size()), below(16)));
                break;
            case 2:  // within the trailer
                bytes[bytes.size() - 1 - below(std::min<std::size_t>(bytes.size(), 32))] =
                    static_cast<char>(below(40));
                break;
            default:  // often within the offset table
                bytes[bytes.size() - 1 - below(bytes.size() / 4)] = static_cast<char>(m_random());
                break;
        }
    }

    std::mt19937_64 m_random;
};

TEST(KeyedArchiveFuzzTest, SurvivesMutations) {
    constexpr int kCases = 40000;
    constexpr std::chrono::seconds kLimit(5);
    constexpr int kFewest = 2000;
    const std::vector<std::string> originals = corpus();
    ASSERT_GT(originals.size(), 50U);
    Mutator mutator(1);
    const auto end = std::chrono::steady_clock::now() + kLimit;
    int count = 0;
    while (count < kCases && (count < kFewest || std::chrono::steady_clock::now() < end)) {
        std::string bytes = originals[mutator.below(originals.size())];
        mutator.mutate(bytes);
        // A block of exactly this size, so that a sanitizer sees a read past its end.
        const std::vector<char> block(bytes.begin(), bytes.end());
        tryInput({block.data(), block.size()});
        ++count;
    }
    EXPECT_GE(count, kFewest);
}

}  // namespace
}  // namespace quorbel
