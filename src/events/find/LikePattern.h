#pragma once

#include <QString>

#include <string>

namespace quorbel {

/// A regular expression for the messages that differ from this one in their numbers and addresses
/// alone. Of a long message, it means the beginning.
std::string likePattern(const QString &message);

/// A pattern with "*" in the place of numbers and addresses, as the service's filters take it; of a
/// long message with "*" at the end. Matches at least what is alike.
QString likeWildcards(const QString &message);

}  // namespace quorbel
