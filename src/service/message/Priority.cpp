#include "service/message/Priority.h"

#include "common/Facility.h"
#include "common/Severity.h"

#include <array>
#include <string>

namespace quorbel {

namespace {

using Texts = std::array<std::string, kFacilityCount * kSeverityCount>;

Texts makeTexts() {
    Texts texts;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i] = std::string(kFacilityNames[i / kSeverityCount]) + '.' +
                   std::string(kSeverityClasses[i % kSeverityCount].name);
    }
    return texts;
}

}  // namespace

std::string_view Priority::text() const {
    static const Texts texts = makeTexts();
    return texts[std::size_t{facility} * kSeverityCount + severity];
}

}  // namespace quorbel
