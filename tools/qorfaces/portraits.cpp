#include "portraits.h"

#include "new_file.h"
#include "picture_file.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace qorfaces {

namespace {

constexpr int kQuality = 95;

bool isGrey(const cv::Mat& picture) {
  cv::Mat channels[3];
  cv::split(picture, channels);
  return cv::norm(channels[0], channels[1], cv::NORM_INF) == 0 &&
         cv::norm(channels[0], channels[2], cv::NORM_INF) == 0;
}

// A profile of inks, for example, says nothing of the colours that they have become.
bool fits(const Bytes& profile, const cv::Mat& picture) {
  const ProfileColours colours = coloursOf(profile);
  return colours == ProfileColours::rgb || (colours == ProfileColours::grey && isGrey(picture));
}

Bytes encoded(const cv::Mat& portrait, const Bytes& profile) {
  cv::Mat pixels = portrait;
  // Profiles of greys belong to pictures of greys.
  if (!profile.empty() && coloursOf(profile) == ProfileColours::grey) {
    cv::extractChannel(portrait, pixels, 0);
  }
  Bytes file;
  if (!cv::imencode(".jpg", pixels, file, {cv::IMWRITE_JPEG_QUALITY, kQuality})) {
    throw std::runtime_error("a portrait cannot be encoded");
  }
  return withColourProfile(file, profile);
}

void write(const std::string& file, const Bytes& contents, const std::filesystem::path& onTheWay) {
  NewFile copy(std::filesystem::u8path(file), onTheWay);
  copy.write({contents.begin(), contents.end()});
  copy.putInPlaceUnsynced();
}

// Without a file where there is no head to cut out.
Portrait portraitOf(const qorocv::client::Face& face, const Photograph& photograph,
                    const PortraitShape& shape, const std::string& file,
                    const std::filesystem::path& onTheWay) {
  const cv::Size size = photograph.picture.size();
  Head head{};
  if (face.headCentre) {
    head = {{face.headCentre->x * size.width, face.headCentre->y * size.height},
            face.chin.y * size.height};
  }
  const auto crop = cropAround(head, shape);
  const cv::Mat pixels = crop ? cutPortrait(photograph.picture, *crop, shape) : cv::Mat();
  if (pixels.empty()) {
    return {{}, {LookAt::noHead}};
  }
  write(file, encoded(pixels, photograph.profile), onTheWay);
  Portrait portrait{file, {}};
  if (!face.headTopMeasured) {
    portrait.lookAt.push_back(LookAt::topAssumed);
  } else if (isDoubtful(head, face.noseBridge.y * size.height)) {
    portrait.lookAt.push_back(LookAt::topDoubtful);
  }
  if (leaves(*crop, size)) {
    portrait.lookAt.push_back(LookAt::leavesPhotograph);
  }
  if (photograph.profileDropped) {
    portrait.lookAt.push_back(LookAt::profileDropped);
  }
  return portrait;
}

} // namespace

Photograph readPhotograph(const std::string& photo) {
  const Bytes file = readFile(photo);
  Photograph result{decodePicture(file), colourProfile(file), false};
  if (result.picture.empty()) {
    throw std::runtime_error("the photograph cannot be read again to cut portraits");
  }
  if (!result.profile.empty() && !fits(result.profile, result.picture)) {
    result.profile.clear();
    result.profileDropped = true;
  }
  return result;
}

std::string portraitStem(const std::string& photo, const std::string& directory) {
  return (std::filesystem::u8path(directory) / std::filesystem::u8path(photo).filename())
      .u8string();
}

std::vector<Portrait> writePortraits(const Photograph& photograph,
                                     const qorocv::client::Photo& found, const PortraitShape& shape,
                                     const std::string& stem,
                                     const std::filesystem::path& onTheWay) {
  std::vector<Portrait> portraits;
  makeDirectory(std::filesystem::u8path(stem).parent_path());
  for (const qorocv::client::Face& face : found.faces) {
    const std::string file = stem + "-" + std::to_string(portraits.size() + 1) + ".jpg";
    portraits.push_back(portraitOf(face, photograph, shape, file, onTheWay));
  }
  return portraits;
}

} // namespace qorfaces
