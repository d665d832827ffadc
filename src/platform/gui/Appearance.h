#pragma once

class QApplication;

namespace quorbel {

/// Gives the whole program its look: one style, one light palette and one style sheet on any
/// desktop, light or dark, because pages are white. Buttons have letters from then on (see
/// Mnemonics). Call once, before the first window is made.
///
/// The user's font size is kept; the style sheet's own sizes follow from it.
void applyAppearance(QApplication &application);

}  // namespace quorbel
