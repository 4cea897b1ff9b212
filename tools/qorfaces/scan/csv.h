// Comma-separated values as RFC 4180 has them.
#pragma once

#include <string>
#include <vector>

namespace qorfaces {

/// A text that no spreadsheet takes for a formula: one that begins like a formula gets an
/// apostrophe before it. File names get "./" instead, which names the same file.
std::string harmlessText(const std::string& text);
std::string harmlessName(const std::string& name);

/// A record of at least one cell with its line's end. Cells are quoted where they must be.
std::string csvRecord(const std::vector<std::string>& cells);

} // namespace qorfaces
