// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// A page with the table of file formats between the lines `<!-- formats: begin -->` and `<!-- formats: end -->` made
/// anew; an empty answer stands for a page without them.
std::string AddFormatTable(const std::string& page);
