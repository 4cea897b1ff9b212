// The process that looks at photographs, for the one that knows which.
//
// Standard input brings lines of JSON: first {"models", "out", "slots", "settings"}, the first two in hexadecimal,
// then a photograph on each, {"id", "thumbnail", "portraits"} with its "path" or its "bytes". Standard output gives
// "ready" or "models " and what is wrong with them, then for each photograph its id, its outcome as a number, the
// number of faces, and the members of its line in faces.ndjson, or why the run folder cannot be written, with blanks
// between the four. Photographs come in the order in which they are done.
#pragma once

#include "exit_code.h"

namespace qorfaces {

/// What became of a photograph.
enum class Outcome { failed = 0, good = 1, cannotWrite = 2 };

/// Works until standard input ends. What was not answered by then is not waited for: whoever gives out
/// the photographs ends it with the last answer, or has ended itself.
ExitCode work();

} // namespace qorfaces
