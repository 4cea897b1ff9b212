// What is known of a photograph.
#pragma once

#include "portrait.h"

#include <qorocv460/client.h>
#include <vector>

namespace qorfaces {

using qorocv::client::Face;
using qorocv::client::Point;

struct Analysis : qorocv::client::Photo { // with more than 30 faces where there are tiles
  bool damaged = false; // the file is damaged or cut short; what could be read was used
  std::vector<Portrait> portraits{}; // one a face, where they were asked for
};

} // namespace qorfaces
