// The pictures that a scan writes of a photograph: a small copy, and a portrait of each face.
#pragma once

#include "photograph_file.h"
#include "portrait.h"
#include "scan_settings.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <qorocv460/client.h>
#include <string>
#include <vector>

namespace qorfaces {

/// Where a photograph's pictures lie: UTF-8, with /, below the run folder. The same for the same path
/// and name, and for no other.
struct PictureNames {
  std::string thumbnail;
  std::string portraits; // what their names begin with
};

PictureNames pictureNames(const PhotographFile& file);

struct Pictures {
  std::string thumbnail; // below the run folder; empty where there is none
  std::vector<Portrait> portraits;
};

/// Writes what the settings ask for into the run folder. `photo`, the photograph's name, is UTF-8.
/// Throws CannotWrite where a picture cannot be written, and std::runtime_error where the photograph
/// cannot be read again to cut portraits.
Pictures writePictures(const std::string& photo, const qorocv::client::Photo& found,
                       const ScanSettings& settings, const std::filesystem::path& run,
                       const PictureNames& names);

/// Removes what was left of pictures by processes that were ended while they wrote them.
void removeUnfinishedPictures(const std::filesystem::path& run);

/// Whether a name from a journal, which may be another person's, leads out of the run folder's pictures.
bool leadsElsewhere(const std::filesystem::path& picture);

/// The pictures that a line of faces.ndjson names, below the run folder.
std::vector<std::string> picturesOf(const nlohmann::ordered_json& line);

} // namespace qorfaces
