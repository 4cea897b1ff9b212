// Where the models are looked for when nobody says where they are.
#pragma once

#include <string>

namespace qorfaces {

/// models/ in the current directory; where there is none, the one that was unpacked with the
/// program: beside it, or beside the directory that it lies in. In UTF-8. Where there is none of
/// these either, the first.
std::string defaultModels();

} // namespace qorfaces
