// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

/// Draws the buttons and fields within a widget as attribute panels draw theirs.
void UsePanelLook(QWidget& widget);
