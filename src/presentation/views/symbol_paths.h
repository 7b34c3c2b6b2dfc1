// The shapes of the small signs beside texts.
#pragma once

#include <QPainterPath>
#include <QStringView>

namespace brimwatch {

// The shape of a sign, to be filled, within a square of 1 by 1: "checkmark.circle.fill",
// "circle.lefthalf.filled", "exclamationmark.triangle.fill", "exclamationmark.octagon.fill",
// "laptopcomputer", "arrow.up.arrow.down", "folder", "pencil", "pause.circle",
// "exclamationmark.circle", "questionmark.circle", "line.3.horizontal" or
// "chevron.up.chevron.down". Empty for any other name.
QPainterPath symbolPath(QStringView name);

}  // namespace brimwatch
