// The options that say how portraits are cut.
#pragma once

#include "portrait_crop.h"

#include <optional>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace qorfaces {

/// What stands on the command line.
struct CropWords {
  std::string aspect; // empty: no portraits
  PortraitShape shape;
};

/// Adds --crop and what goes with it, and gives --crop back. `words` has to live as long as the app.
CLI::Option* describeCrop(CLI::App& app, CropWords& words);

/// Nothing where no portraits are asked for. Throws CLI::ValidationError where portraits would be wider
/// than their files can be.
std::optional<PortraitShape> shapeOf(const CropWords& words);

} // namespace qorfaces
