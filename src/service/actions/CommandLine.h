#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

// How the texts of a "run command" reaction are read.

/// Splits arguments at blanks as a shell does: single quotes keep everything, double quotes all but
/// a backslash in front of one of $ ` " \ and a line end, a backslash elsewhere the next character.
/// Nothing is expanded. Nothing is returned when a quotation has no end.
std::optional<std::vector<std::string>> splitArguments(std::string_view text);

/// An environment, "NAME=value" each.
using Environment = std::vector<std::string>;

/// Sets a variable, in place of one of that name. A NUL ends the value, as it does for the system.
void setVariable(Environment &environment, std::string_view name, std::string_view value);

/// Sets a variable for each line of the form "NAME=value", whose value is taken as it stands. Blank
/// lines are skipped. Returns the first of the other lines, which are skipped as well.
std::optional<std::string> addVariables(Environment &environment, std::string_view lines);

}  // namespace quorbel
