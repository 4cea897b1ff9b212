// What is drawn on annotated copies where the library draws nothing.
#pragma once

#include "analysis.h"

#include <string>
#include <vector>

namespace qorfaces {

/// Marks the head centres, in yellow, on a copy that the library has annotated. A copy that cannot
/// be read stays as it is.
void markHeadCentres(const std::string& copy, const std::vector<Face>& faces);

/// Writes the photograph, at its own size, with boxes in green and, where faces have them, head
/// centres in yellow. Throws std::runtime_error where that fails.
void annotateGroup(const std::string& photo, const std::string& copy,
                   const std::vector<Face>& faces);

} // namespace qorfaces
