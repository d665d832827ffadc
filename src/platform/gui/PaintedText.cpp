#include "platform/gui/PaintedText.h"

#include "platform/Text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quorbel {

namespace {

/// More than any screen is wide. As long as the service's longest message, too.
constexpr qsizetype kLongestRow = 1024;

// The time that a line takes grows with the square of its length; this takes a few milliseconds.
constexpr qsizetype kLongestLine = 8192;
/// So many characters before that, a line is broken behind a space.
constexpr qsizetype kBreakAtSpace = 256;

bool isPlain(QChar character) {
    return character >= u' ' && character <= u'~';
}

QString spelledOut(char32_t code) {
    return QStringLiteral("<U+%1>").arg(QString::number(code, 16).toUpper(), 4, u'0');
}

}  // namespace

PaintedText::PaintedText(QString text) : m_text(std::move(text)) {}

QString PaintedText::paintRow(qsizetype longest) {
    QString result;
    while (!isComplete() && m_painted < longest) {
        paintCharacter(Form::kRow, result);
    }
    if (!isComplete()) {
        substitute(QStringLiteral("…"), m_text.size() - m_taken, result);
    }
    return result;
}

QString PaintedText::paintLines(qsizetype count) {
    QString result;
    const qsizetype end = std::min(m_taken + count, m_text.size());
    while (m_taken < end) {
        const qsizetype left = kLongestLine - m_lineLength;
        const bool isBehindSpace = m_taken > 0 && m_text[m_taken - 1] == u' ';
        if ((left <= 0 || (left <= kBreakAtSpace && isBehindSpace)) && m_text[m_taken] != u'\n') {
            substitute(QStringLiteral("\n"), 0, result);
        }
        paintCharacter(Form::kLines, result);
    }
    return result;
}

void PaintedText::paintCharacter(Form form, QString &result) {
    const QChar first = m_text[m_taken];
    const bool isLineEnd = form == Form::kLines && first == u'\n';
    if (isPlain(first) || first == u'\t' || isLineEnd) {
        result += first;
        ++m_taken;
        ++m_painted;
        m_lineLength = isLineEnd ? 0 : m_lineLength + 1;
        return;
    }
    if (form == Form::kLines && QStringView(m_text).sliced(m_taken).startsWith(u"\r\n")) {
        substitute(QStringLiteral("\n"), 2, result);
        return;
    }
    const char32_t code = codeAt(m_taken);
    const qsizetype length = QChar::requiresSurrogates(code) ? 2 : 1;
    if (isUnseen(code, codeBefore(m_taken), codeAt(m_taken + length))) {
        substitute(spelledOut(code), length, result);
        return;
    }
    result += QStringView(m_text).sliced(m_taken, length);
    m_taken += length;
    m_painted += length;
    m_lineLength += length;
}

void PaintedText::substitute(const QString &painted, qsizetype takenLength, QString &result) {
    m_stretches.push_back({m_painted, painted.size(), m_taken, takenLength});
    result += painted;
    m_taken += takenLength;
    m_painted += painted.size();
    m_lineLength = painted == u'\n' ? 0 : m_lineLength + painted.size();
}

char32_t PaintedText::codeAt(qsizetype position) const {
    if (position >= m_text.size()) {
        return 0;
    }
    const QChar first = m_text[position];
    return first.isHighSurrogate() && position + 1 < m_text.size() &&
                   m_text[position + 1].isLowSurrogate()
               ? QChar::surrogateToUcs4(first, m_text[position + 1])
               : first.unicode();
}

char32_t PaintedText::codeBefore(qsizetype position) const {
    if (position == 0) {
        return 0;
    }
    const bool isPair = position > 1 && m_text[position - 1].isLowSurrogate() &&
                        m_text[position - 2].isHighSurrogate();
    return codeAt(position - (isPair ? 2 : 1));
}

QString PaintedText::original(qsizetype begin, qsizetype end) const {
    if (begin >= end) {
        return {};
    }
    const qsizetype from = originalPosition(begin, false);
    const qsizetype to = end >= m_painted ? m_text.size() : originalPosition(end, true);
    return m_text.sliced(from, to - from);
}

qsizetype PaintedText::originalPosition(qsizetype painted, bool isEnd) const {
    const auto next = std::ranges::upper_bound(m_stretches, painted, {}, &Stretch::painted);
    if (next == m_stretches.begin()) {
        return painted;
    }
    const Stretch &last = *std::prev(next);
    const qsizetype inside = painted - last.painted;
    if (inside >= last.paintedLength) {
        return last.taken + last.takenLength + (inside - last.paintedLength);
    }
    // What is partly meant is meant as a whole.
    return last.taken + (isEnd && inside > 0 ? last.takenLength : 0);
}

QString paintedRow(const QString &text) {
    if (text.size() <= kLongestRow && std::ranges::all_of(text, isPlain)) {
        return text;
    }
    return PaintedText(text).paintRow(kLongestRow);
}

}  // namespace quorbel
