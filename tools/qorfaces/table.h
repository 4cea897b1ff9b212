// Results for people.
#pragma once

#include "output.h"

#include <memory>

namespace qorfaces {

/// One line about each photograph, then a heading and a row per face where there is one. Failures
/// are not for standard output.
std::unique_ptr<Output> tableOutput();

} // namespace qorfaces
