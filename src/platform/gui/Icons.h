#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

class QLabel;

namespace quorbel {

// The images of the interface, drawn afresh for each size and resolution. They are resources of the
// layout and stand under ":/images".

/// "Normal", "Moderate" or "Severe". No image for any other name.
QIcon severityIcon(const QString &name);

/// A line drawing by its name: "home", "delete". It is drawn in the text's grey, in the accent
/// colour when it is on (a checked button), pale when it is disabled, white when it is selected;
/// `colour` takes the place of the grey. No image for an unknown name.
QIcon lineIcon(const QString &name, const QColor &colour = {});

QIcon applicationIcon();

/// Shows an icon in a label at `size` (logical pixels), as sharp as the label's screen is.
void setLabelIcon(QLabel &label, const QIcon &icon, int size);

}  // namespace quorbel
