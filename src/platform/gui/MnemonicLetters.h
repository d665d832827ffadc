#pragma once

#include <QChar>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

namespace quorbel {

/// The letter that a text marks itself ("&Copy"), in upper case; null when it marks none. "&&" is a
/// character of the text.
[[nodiscard]] QChar markedLetter(const QString &text);

/// Chooses for each text one of its letters that is not in `taken` and not another's, and adds it
/// to `taken`, all in upper case. First letters of words go before others, earlier texts before
/// later ones, but as many texts as possible get a letter; what follows a tab counts for none. The
/// same texts get the same letters each time.
///
/// Returns the letters' places in the texts, -1 where nothing is left or the text marks a letter
/// itself, which is taken as well.
[[nodiscard]] QList<qsizetype> chooseLetters(const QStringList &texts, QSet<QChar> &taken);

/// `text` with its letter marked by "&"; as it is for the place -1.
[[nodiscard]] QString withLetterMarked(const QString &text, qsizetype place);

}  // namespace quorbel
