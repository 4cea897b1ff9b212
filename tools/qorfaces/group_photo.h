// A group photograph looked at tile by tile.
#pragma once

#include "grid.h"

#include <qorocv460/client.h>
#include <string>
#include <vector>

namespace qorfaces {

/// Looks at every tile of the grid and at the whole photograph, with the SSD network, on as many
/// threads and slots as there are processors, and reports every face once, with head centres.
/// `found` also counts the boxes beyond the 30 that the library lists of a tile.
qorocv::client::Result<qorocv::client::Photo>
findInTiles(const std::string& photo, const Grid& grid, const qorocv::client::Request& request);

/// The same on the caller's thread and in one slot, for a caller who looks at several photographs at
/// once.
qorocv::client::Result<qorocv::client::Photo> findInTiles(const std::string& photo,
                                                          const Grid& grid,
                                                          const qorocv::client::Request& request,
                                                          int slot);

/// Forgets head centres that were not asked for: the functions that report tiles and masks report
/// them in any case.
void dropHeadCentres(std::vector<qorocv::client::Face>& faces);

} // namespace qorfaces
