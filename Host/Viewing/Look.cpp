// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/Look.h"
