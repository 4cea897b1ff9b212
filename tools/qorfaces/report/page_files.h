// The page of a report, as the program carries it.
#pragma once

#include "embedded_file.h"

namespace qorfaces {

/// index.html and what it loads, but for data. What the build makes of the files beside this one.
const std::vector<EmbeddedFile>& pageFiles();

} // namespace qorfaces
