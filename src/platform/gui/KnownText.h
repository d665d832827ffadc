#pragma once

#include <QString>

#include <string_view>

namespace quorbel {

// Texts that are made without Qt, by the service, the log or what both programs share, as the user
// reads them. Only for what is shown: what is stored, sent or compared stays as it is. What the
// tables in KnownText.cpp do not know comes back to the letter.

/// The name of a severity, of a rating or of a choice: "Error", "Severe", "Any".
QString knownName(const QString &name);
QString knownName(std::string_view name);

/// What is wrong: a reply of the service, or a reason. Names and numbers in it stay what they are.
QString knownProblem(const QString &problem);

}  // namespace quorbel
