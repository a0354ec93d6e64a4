// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QIcon>

class QPalette;

/// Small signs beside lines of text.
enum class Sign { kError, kNote, kDone };

/// The color that a sign has before the ground of the palette.
QColor GetSignColor(Sign sign, const QPalette& palette);

/// The sign as an icon, drawn for the palette and the text height of the application.
QIcon MakeSignIcon(Sign sign);
