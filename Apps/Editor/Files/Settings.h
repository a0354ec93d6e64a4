// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// The file of the user's settings of the editor.
QString GetSettingsFile();
