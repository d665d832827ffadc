#pragma once

#include <QString>

#include <vector>

namespace quorbel {

/// How a text that anybody may have sent is painted: what cannot be seen, or would make it look
/// other than it is, is spelled out as "<U+202E>" (see isUnseen), and only so much of it is laid
/// out as somebody looks at, because laying out megabytes takes a minute.
///
/// It knows which part of the text a part of what is painted stands for. So what is copied,
/// exported or compared stays as it is, to the letter.
class PaintedText {
public:
    explicit PaintedText(QString text = {});

    [[nodiscard]] const QString &text() const { return m_text; }

    /// The text in one row, at most about `longest` characters of it; "…" stands for the rest.
    /// Call it once, and not with paintLines().
    QString paintRow(qsizetype longest);
    /// The next `count` characters of the text, in its own lines; one that is too long to be laid
    /// out as a whole is broken. Each call goes on where the one before ended.
    QString paintLines(qsizetype count);
    /// Whether all of the text is painted.
    [[nodiscard]] bool isComplete() const { return m_taken == m_text.size(); }

    /// The part of the text that the painted characters from `begin` up to `end` stand for, as the
    /// results of all calls count them one after the other. Behind them follows all that is not
    /// painted yet.
    [[nodiscard]] QString original(qsizetype begin, qsizetype end) const;

private:
    /// Painted characters that stand for others, or for none.
    struct Stretch {
        qsizetype painted;
        qsizetype paintedLength;
        qsizetype taken;
        qsizetype takenLength;
    };
    enum class Form { kRow, kLines };

    void paintCharacter(Form form, QString &result);
    void substitute(const QString &painted, qsizetype takenLength, QString &result);
    [[nodiscard]] char32_t codeAt(qsizetype position) const;
    [[nodiscard]] char32_t codeBefore(qsizetype position) const;
    [[nodiscard]] qsizetype originalPosition(qsizetype painted, bool isEnd) const;

    QString m_text;
    qsizetype m_taken = 0;    // so much of m_text is painted
    qsizetype m_painted = 0;  // in so many characters
    qsizetype m_lineLength = 0;
    std::vector<Stretch> m_stretches;
};

/// The text as a row of a table, or a label of one line, paints it.
QString paintedRow(const QString &text);

}  // namespace quorbel
