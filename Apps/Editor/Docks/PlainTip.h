// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// A text as a tooltip that shows every character as it is: what looks like markup in a name or a message stays text.
inline QString MakePlainTip(const QString& text) { return QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped()); }
