// One photograph of a scan through the library.
#pragma once

#include "scan_settings.h"

#include <qorocv460/client.h>
#include <string>

namespace qorfaces {

/// `path` is UTF-8. On the shared pair where all landmarks are asked for, so one at a time then.
qorocv::client::Result<qorocv::client::Photo> look(const std::string& path,
                                                   const ScanSettings& settings, int slot);

} // namespace qorfaces
