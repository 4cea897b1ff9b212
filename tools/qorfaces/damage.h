// What the picture codecs say of a damaged photograph.
#pragma once

#include <string>

namespace qorfaces {

/// Whether what was printed while a photograph was read tells that its file is damaged or cut
/// short. Of the formats that the library reads only JPEG is read in part; a photograph in another
/// one is unreadable then. Other warnings, about a colour profile for example, tell of no damage.
bool tellsOfDamage(const std::string& printed);

} // namespace qorfaces
