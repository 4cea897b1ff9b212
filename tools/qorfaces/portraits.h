// Portraits: each face of a photograph in a picture of its own.
#pragma once

#include "colour_profile.h"
#include "portrait.h"
#include "portrait_crop.h"

#include <opencv2/core.hpp>

#include <filesystem>
#include <qorocv460/client.h>
#include <string>
#include <vector>

namespace qorfaces {

/// What the names of a photograph's portraits begin with, in UTF-8: its file name, in `directory`.
std::string portraitStem(const std::string& photo, const std::string& directory);

/// A photograph's pixels, and what their numbers mean.
struct Photograph {
  cv::Mat picture; // 8-bit BGR, upright
  Bytes profile;
  bool profileDropped = false;
};

/// Throws std::runtime_error where the photograph cannot be read.
Photograph readPhotograph(const std::string& photo);

/// Cuts and writes a portrait of each face of a photograph with head centres, upright, as JPEG
/// files with the photograph's colour profile, named STEM-1.jpg and so on. Makes the directory where
/// it is missing. In the order of the faces. Throws CannotWrite where a portrait cannot be written;
/// what was there before then stays. All names are UTF-8. `onTheWay` is as for NewFile.
std::vector<Portrait> writePortraits(const Photograph& photograph,
                                     const qorocv::client::Photo& found, const PortraitShape& shape,
                                     const std::string& stem,
                                     const std::filesystem::path& onTheWay = {});

} // namespace qorfaces
