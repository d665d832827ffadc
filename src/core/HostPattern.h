#pragma once

#include "common/IpAddress.h"
#include "core/TextPattern.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Which hosts are meant: a list, separated by commas, of names and addresses, in which "*" stands
/// for any characters and "?" for one, and of addresses with a mask ("10.0.0.0/8",
/// "10.0.0.0/255.0.0.0", "fe80::/10"), which mean the addresses alone. An address means itself
/// however it is written. What follows a "!" is excluded; a list of nothing else means all other
/// hosts. Capital and small letters are alike.
///
/// A name in quotation marks means the host of that name alone, to the letter; a quotation mark
/// that is part of it stands twice. Quotation marks that do not embrace all of a name are a part
/// of it.
class HostPattern {
public:
    explicit HostPattern(std::string_view pattern);

    /// The name in quotation marks.
    static std::string quoted(std::string_view host);
    /// What means that host: its name, in quotation marks where it would mean others without.
    static std::string meaning(std::string_view host);

    /// The part of a pattern that was to be a network, but is none ("10.0.0.0/99", "10.0.0/8");
    /// nothing when there is no such part. It would mean no host.
    static std::optional<std::string> wrongNetworkIn(std::string_view pattern);

    struct Network {
        IpAddress address;
        unsigned bits;  ///< of 128
    };
    /// What a part of a pattern stands for: the first of the three that there is.
    struct Meaning {
        bool isExcluded = false;
        std::optional<std::string> host{};  ///< that one alone, to the letter
        std::optional<Network> network{};
        std::string name{};  ///< in which "*" and "?" stand for others
    };
    static std::vector<Meaning> meaningsOf(std::string_view pattern);

    /// Whether nothing is named in it, as in "!" or ",": then all hosts are meant.
    [[nodiscard]] bool isAny() const { return m_meant.empty() && m_excluded.empty(); }
    [[nodiscard]] bool matches(std::string_view host) const;

private:
    class Part {
    public:
        explicit Part(std::string_view pattern);
        [[nodiscard]] bool matches(std::string_view host) const;
        static std::optional<Network> networkOf(std::string_view pattern);

    private:
        std::optional<std::string> m_host;  // alone, to the letter
        std::optional<Network> m_network;
        TextPattern m_name;
    };

    std::vector<Part> m_meant;
    std::vector<Part> m_excluded;
};

}  // namespace quorbel
