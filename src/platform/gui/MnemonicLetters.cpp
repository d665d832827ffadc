#include "platform/gui/MnemonicLetters.h"

#include <QHash>

namespace quorbel {

namespace {

bool isFirstOfWord(const QString &text, qsizetype place) {
    return place == 0 || !text[place - 1].isLetterOrNumber();
}

/// Who has which letter. Where a text finds all of its own in use, another text gives one up and
/// takes another, so that as many as possible have one.
class Choice {
public:
    Choice(const QStringList &texts, QSet<QChar> &taken)
        : m_texts(texts), m_taken(taken), m_places(texts.size(), -1) {}

    void takeFirstOfWord(qsizetype text) {
        const QString &whole = m_texts[text];
        for (qsizetype place = 0; place < endOf(text) && m_places[text] < 0; ++place) {
            if (isFirstOfWord(whole, place) && isOffered(text, place) &&
                !m_owners.contains(letterAt(text, place))) {
                take(text, place);
            }
        }
    }
    /// False when none can be had. `asked` are the letters that were tried for it already.
    bool takeAny(qsizetype text, QSet<QChar> &asked) {
        for (const bool mayDisplace : {false, true}) {
            for (qsizetype place = 0; place < endOf(text); ++place) {
                const QChar letter = letterAt(text, place);
                if (isOffered(text, place) && !asked.contains(letter) &&
                    isFree(letter, mayDisplace, asked)) {
                    take(text, place);
                    return true;
                }
            }
        }
        return false;
    }
    [[nodiscard]] const QList<qsizetype> &places() const { return m_places; }
    [[nodiscard]] QList<QChar> letters() const { return m_owners.keys(); }

private:
    [[nodiscard]] qsizetype endOf(qsizetype text) const {
        const qsizetype tab = m_texts[text].indexOf(u'\t');
        return tab < 0 ? m_texts[text].size() : tab;
    }
    [[nodiscard]] QChar letterAt(qsizetype text, qsizetype place) const {
        return m_texts[text][place].toUpper();
    }
    [[nodiscard]] bool isOffered(qsizetype text, qsizetype place) const {
        return m_texts[text][place].isLetter() && !m_taken.contains(letterAt(text, place));
    }
    bool isFree(QChar letter, bool mayDisplace, QSet<QChar> &asked) {
        if (!m_owners.contains(letter)) {
            return true;
        }
        if (!mayDisplace) {
            return false;
        }
        asked.insert(letter);
        return takeAny(m_owners[letter], asked);
    }
    void take(qsizetype text, qsizetype place) {
        m_places[text] = place;
        m_owners[letterAt(text, place)] = text;
    }

    const QStringList &m_texts;
    const QSet<QChar> &m_taken;
    QList<qsizetype> m_places;
    QHash<QChar, qsizetype> m_owners;
};

}  // namespace

QChar markedLetter(const QString &text) {
    for (qsizetype place = 0; place + 1 < text.size(); ++place) {
        if (text[place] == u'&') {
            ++place;
            if (text[place] != u'&') {
                return text[place].toUpper();
            }
        }
    }
    return {};
}

QList<qsizetype> chooseLetters(const QStringList &texts, QSet<QChar> &taken) {
    QList<qsizetype> unmarked;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (const QChar own = markedLetter(texts[i]); own.isNull()) {
            unmarked.append(i);
        } else {
            taken.insert(own);
        }
    }
    Choice choice(texts, taken);
    for (const qsizetype text : unmarked) {
        choice.takeFirstOfWord(text);
    }
    for (const qsizetype text : unmarked) {
        if (choice.places()[text] < 0) {
            QSet<QChar> asked;
            choice.takeAny(text, asked);
        }
    }
    for (const QChar letter : choice.letters()) {
        taken.insert(letter);
    }
    return choice.places();
}

QString withLetterMarked(const QString &text, qsizetype place) {
    return place < 0 ? text : QString(text).insert(place, u'&');
}

}  // namespace quorbel
