// Portraits: each face of a photograph in a picture of its own.
#pragma once

#include "portrait.h"
#include "portrait_crop.h"

#include <qorocv460/client.h>
#include <string>
#include <vector>

namespace qorfaces {

/// What the names of a photograph's portraits begin with, in UTF-8: its file name, in `directory`.
std::string portraitStem(const std::string& photo, const std::string& directory);

/// Cuts and writes a portrait of each face of a photograph with head centres, upright, as JPEG
/// files with the photograph's colour profile, named STEM-1.jpg and so on. Makes the directory where
/// it is missing. In the order of the faces. Throws std::runtime_error where the photograph cannot
/// be read again or a portrait cannot be written; what was there before then stays. All names are
/// UTF-8.
std::vector<Portrait> writePortraits(const std::string& photo, const qorocv::client::Photo& found,
                                     const PortraitShape& shape, const std::string& stem);

} // namespace qorfaces
