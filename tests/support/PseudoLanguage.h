#pragma once

#include <QTranslator>

#include <set>
#include <utility>

namespace quorbel::testing {

/// A language made of the English texts: with accents, half as long again, in brackets, and with
/// each place for something else outside of them, "[Ŕéàd ]%1[ òf ]%2[ ~~~~]". What is shown outside
/// of brackets has come past translation, or was never collected for it. Qt's own texts stay in
/// English.
class PseudoLanguage : public QTranslator {
public:
    PseudoLanguage();

    [[nodiscard]] QString translate(const char *context, const char *sourceText,
                                    const char *disambiguation, int n) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }

    /// What of a text that is shown stands outside of brackets, but for blanks and marks.
    [[nodiscard]] static QString outside(const QString &shown);

private:
    std::set<std::pair<QString, QString>> m_collected;  ///< contexts and sources
};

}  // namespace quorbel::testing
