#pragma once

#include <QStringList>

#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// The lines of a stored text, to be found again in what was made of it in an editor. Editors end
/// all lines alike; a stored text may end each in another way.
class StoredLines {
public:
    StoredLines() = default;
    /// `shown` are the lines as the editor shows them. They end in CR LF, LF, CR or U+2029.
    StoredLines(std::string_view stored, const QStringList &shown);

    /// The lines of the edited text with the ends that they had. A line that was not changed comes
    /// back to the byte; a changed one has the end of the line that it was; a new one that of the
    /// line before it, the first of all that of the first stored one.
    [[nodiscard]] std::string restored(const QStringList &edited) const;

private:
    struct Line {
        QString shown;
        std::string text;
        std::string end;  ///< empty for the last one
    };
    static constexpr qsizetype kNone = -1;

    void split(std::string_view stored);
    [[nodiscard]] std::vector<qsizetype> origins(const QStringList &edited) const;

    std::vector<Line> m_lines;
};

}  // namespace quorbel
