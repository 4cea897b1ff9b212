#include "look.h"

#include "group_photo.h"

#include <algorithm>
#include <cmath>

namespace qorfaces {

namespace {

namespace client = qorocv::client;

// With --tiles auto: a network that looks at 300 x 300 pixels sees a face of 75 pixels in a tile one
// and a half such cells wide.
constexpr double kCell = 1500; // pixels of the photograph
constexpr int kLarge = 3000;   // the longer side of a photograph that has more than one cell

using MaybePhoto = client::Result<client::Photo>;

MaybePhoto lookWithMask(const std::string& path, const client::Request& request, int slot) {
  client::Result<client::MaskedPhoto> masked = client::analyseWithMasks(path, request, slot);
  return masked ? MaybePhoto(std::move(masked->photo)) : MaybePhoto(masked.error());
}

MaybePhoto lookInTiles(const std::string& path, const Grid& grid, const client::Request& request,
                       int slot) {
  MaybePhoto photo = findInTiles(path, grid, request, slot);
  if (photo && request.headCentres == client::HeadCentres::none) {
    dropHeadCentres(photo->faces);
  }
  return photo;
}

MaybePhoto lookAtWhole(const std::string& path, const client::Request& request, int slot) {
  if (request.headCentres == client::HeadCentres::byMask) {
    return lookWithMask(path, request, slot);
  }
  return client::analyse(path, request, request.landmarks ? client::kSharedPair : slot);
}

int cells(int side) {
  return std::clamp(static_cast<int>(std::lround(side / kCell)), 1, kMostTiles);
}

} // namespace

MaybePhoto look(const std::string& path, const ScanSettings& settings, int slot) {
  if (settings.tiles == Tiles::grid) {
    return lookInTiles(path, *settings.grid, settings.request, slot);
  }
  MaybePhoto photo = lookAtWhole(path, settings.request, slot);
  if (settings.tiles == Tiles::automatic && photo &&
      std::max(photo->width, photo->height) >= kLarge) {
    return lookInTiles(path, {cells(photo->width), cells(photo->height)}, settings.request, slot);
  }
  return photo;
}

} // namespace qorfaces
