// Which of several machines looks at a photograph.
#pragma once

#include "run_folder.h"

#include <string>

namespace qorfaces {

/// Whether a photograph with this name belongs to the shard. The name is the path below the folder
/// that is scanned, so that machines agree that see the folder at different places.
bool isIn(const Shard& shard, const std::string& name);

} // namespace qorfaces
