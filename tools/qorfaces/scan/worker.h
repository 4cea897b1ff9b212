// The process that looks at photographs, for the one that knows which.
//
// Standard input brings lines of JSON: first {"models", "slots", "settings"}, then a photograph on each,
// {"id", "path"} or {"id", "bytes"}. Standard output gives "ready" or "models " and what is wrong
// with them, then for each photograph its id, 1 or 0 for good or failed, the number of faces, and the members
// of its line in faces.ndjson, with blanks between the four. Photographs come in the order in which they are done.
#pragma once

#include "exit_code.h"

namespace qorfaces {

/// Works until standard input ends.
ExitCode work();

} // namespace qorfaces
