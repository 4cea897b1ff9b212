// Results for programs.
#pragma once

#include "output.h"

#include <memory>

namespace qorfaces {

/// A JSON array with an object per photograph, failed ones included, when all are done.
std::unique_ptr<Output> jsonOutput();

} // namespace qorfaces
