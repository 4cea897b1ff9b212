#include "crop_options.h"

#include <CLI/CLI.hpp>

#include <cmath>

namespace qorfaces {

namespace {

// A head that takes less leaves little of a photograph in most crops, and takes long.
constexpr double kLeastHead = 0.05;
constexpr int kMostCropHeight = 10000;   // pixels
constexpr double kMostCropWidth = 65500; // of a JPEG file

/// The empty text for a shape such as 4:5, else what is wrong with it.
std::string aspectError(const std::string& text) {
  return aspectOf(text) ? std::string()
                        : text + " is no shape: width and height, as in 4:5, at most 10:1 or 1:10";
}

// What is no number lies in every range.
std::string numberError(const std::string& text) {
  double number = 0;
  const bool isNone = CLI::detail::lexical_cast(text, number) && std::isnan(number);
  return isNone ? text + " is no number" : std::string();
}

} // namespace

CLI::Option* describeCrop(CLI::App& app, CropWords& words) {
  CLI::Option* const crop =
      app.add_option("--crop", words.aspect,
                     "Write a portrait of each face, WIDTH to HEIGHT, as a JPEG file with the "
                     "photograph's colour profile")
          ->type_name("WIDTH:HEIGHT")
          ->check(aspectError);
  app.add_option("--head", words.shape.head,
                 "The share of a portrait's height that the head takes, from chin to top")
      ->type_name("SHARE")
      ->capture_default_str()
      ->check(CLI::Range(kLeastHead, 1.0))
      ->check(numberError)
      ->needs(crop);
  app.add_option("--crop-height", words.shape.cropHeight,
                 "Scale portraits to a height of N pixels; without it they keep the photograph's")
      ->type_name("N")
      ->check(CLI::Range(1, kMostCropHeight))
      ->needs(crop);
  app.add_option_function<std::string>(
         "--crop-edge",
         [&words](const std::string& name) {
           words.shape.edge = name == "clip" ? CropEdge::clip : CropEdge::pad;
         },
         "Where a portrait leaves the photograph: go on with its outermost pixels (pad), or end "
         "there (clip)")
      ->type_name("EDGE")
      ->default_str("pad")
      ->check(CLI::IsMember({"pad", "clip"}))
      ->needs(crop);
  return crop;
}

std::optional<PortraitShape> shapeOf(const CropWords& words) {
  const auto aspect = aspectOf(words.aspect);
  if (!aspect) {
    return std::nullopt;
  }
  PortraitShape shape = words.shape;
  shape.aspect = *aspect;
  if (shape.cropHeight && *shape.cropHeight * shape.aspect > kMostCropWidth) {
    throw CLI::ValidationError("--crop-height", "makes portraits of more than 65500 pixels across, "
                                                "which no JPEG file has");
  }
  return shape;
}

} // namespace qorfaces
