#include "control/OptionReader.h"

#include "control/Output.h"

#include <getopt.h>

namespace quorbel {

namespace {

/// What getopt_long(3) gives for the first option; the next ones follow.
constexpr int kFirst = 0x1000;

struct Tables {
    std::string letters;
    std::vector<option> names;
};

Tables tablesOf(const std::vector<Option> &options) {
    Tables tables;
    for (std::size_t i = 0; i < options.size(); ++i) {
        const Option &one = options[i];
        tables.names.push_back({one.name, one.hasValue ? required_argument : no_argument, nullptr,
                                kFirst + static_cast<int>(i)});
        if (one.letter != '\0') {
            tables.letters += one.letter;
            tables.letters += one.hasValue ? ":" : "";
        }
    }
    tables.names.push_back({nullptr, 0, nullptr, 0});
    return tables;
}

const Option *optionOf(const std::vector<Option> &options, int found) {
    if (found >= kFirst) {
        return &options[static_cast<std::size_t>(found - kFirst)];
    }
    for (const Option &one : options) {
        if (one.letter == found) {
            return &one;
        }
    }
    return nullptr;
}

}  // namespace

std::optional<std::vector<std::string>> readOptions(int count, char **values,
                                                    const std::vector<Option> &options) {
    const Tables tables = tablesOf(options);
    int found = 0;
    optind = 0;  // begins anew, with the order of the environment
    // NOLINTNEXTLINE(concurrency-mt-unsafe): before any thread
    while ((found = getopt_long(count, values, tables.letters.c_str(), tables.names.data(),
                                nullptr)) != -1) {
        const Option *one = optionOf(options, found);
        if (one == nullptr) {
            return std::nullopt;  // it was said already
        }
        const std::string problem = one->take(one->hasValue ? optarg : "");
        if (!problem.empty()) {
            complain("--" + std::string(one->name) + ": " + problem);
            return std::nullopt;
        }
    }
    return std::vector<std::string>(values + optind, values + count);
}

bool expectNone(const std::vector<std::string> &others) {
    if (!others.empty()) {
        complain("\"" + others.front() + "\" is not expected here");
    }
    return others.empty();
}

}  // namespace quorbel
