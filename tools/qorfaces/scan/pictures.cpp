#include "pictures.h"

#include "journal.h"
#include "new_file.h"
#include "picture_file.h"
#include "portraits.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace qorfaces {

namespace fs = std::filesystem;

namespace {

constexpr const char* kThumbnails = "thumbnails";
constexpr const char* kPortraits = "portraits";

constexpr int kLongerSide = 320; // pixels of a thumbnail
constexpr int kQuality = 80;
constexpr std::size_t kLongestName =
    180;                         // bytes; file systems take 255, and numbers come behind it
constexpr std::size_t kTold = 8; // digits of a path's hash that tell the same names apart

// Each kind has its own: it may be a link to another file system. A worker that has outlived its scan
// may still write the picture that one of the next scan's writes.
fs::path onTheWay(const fs::path& run, const char* kind) {
  return run / kind / ".new";
}

// Cut between letters.
std::string shortened(std::string name) {
  if (name.size() > kLongestName) {
    std::size_t end = kLongestName;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) {
      --end;
    }
    name.resize(end);
  }
  return name;
}

// A photograph that was named itself may lie above the folder of the call, or anywhere.
fs::path belowFolder(const std::string& name) {
  fs::path result;
  for (const fs::path& part : fs::u8path(name).relative_path()) {
    if (part != "..") {
      result /= fs::u8path(shortened(part.u8string()));
    }
  }
  return result;
}

// JPEG files are decoded at an eighth, a quarter or a half of their size in a fraction of the time.
int modeFor(int longerSide) {
  return longerSide >= 8 * kLongerSide   ? cv::IMREAD_REDUCED_COLOR_8
         : longerSide >= 4 * kLongerSide ? cv::IMREAD_REDUCED_COLOR_4
         : longerSide >= 2 * kLongerSide ? cv::IMREAD_REDUCED_COLOR_2
                                         : cv::IMREAD_COLOR;
}

cv::Mat scaledDown(const cv::Mat& picture) {
  const double scale = static_cast<double>(kLongerSide) / std::max(picture.cols, picture.rows);
  if (scale >= 1) {
    return picture;
  }
  const auto scaled = [scale](int side) {
    return std::max(1, static_cast<int>(std::lround(side * scale)));
  };
  cv::Mat result;
  cv::resize(picture, result, {scaled(picture.cols), scaled(picture.rows)}, 0, 0, cv::INTER_AREA);
  return result;
}

/// Without the photograph's colour profile, which may be longer than the thumbnail.
void writeThumbnail(const cv::Mat& picture, const fs::path& file, const fs::path& onTheWay) {
  Bytes bytes;
  cv::imencode(".jpg", scaledDown(picture), bytes, {cv::IMWRITE_JPEG_QUALITY, kQuality});
  makeDirectory(file.parent_path());
  NewFile thumbnail(file, onTheWay);
  thumbnail.write({bytes.begin(), bytes.end()});
  thumbnail.putInPlaceUnsynced();
}

} // namespace

PictureNames pictureNames(const PhotographFile& file) {
  const std::string hash = hashText(file.path);
  const fs::path below = belowFolder(file.name);
  return {std::string(kThumbnails) + "/" + hash.substr(0, 2) + "/" + hash.substr(2) + ".jpg",
          std::string(kPortraits) + "/" + below.generic_u8string() + "-" + hash.substr(0, kTold)};
}

Pictures writePictures(const std::string& photo, const qorocv::client::Photo& found,
                       const ScanSettings& settings, const fs::path& run,
                       const PictureNames& names) {
  Pictures pictures;
  cv::Mat picture;
  if (settings.crop && !found.faces.empty()) {
    const Photograph photograph = readPhotograph(photo);
    picture = photograph.picture;
    pictures.portraits =
        writePortraits(photograph, found, *settings.crop,
                       (run / fs::u8path(names.portraits)).u8string(), onTheWay(run, kPortraits));
    const std::size_t above = (run / "").u8string().size();
    for (Portrait& portrait : pictures.portraits) {
      portrait.file.erase(0, std::min(above, portrait.file.size()));
    }
  } else if (settings.thumbnails) {
    picture = decodePicture(readFile(photo), modeFor(std::max(found.width, found.height)));
  }
  if (settings.thumbnails && !picture.empty()) {
    writeThumbnail(picture, run / fs::u8path(names.thumbnail), onTheWay(run, kThumbnails));
    pictures.thumbnail = names.thumbnail;
  }
  return pictures;
}

void removeUnfinishedPictures(const fs::path& run) {
  for (const char* const kind : {kThumbnails, kPortraits}) {
    removeUnfinished(onTheWay(run, kind));
  }
}

bool leadsElsewhere(const fs::path& picture) {
  const bool isBelow = std::distance(picture.begin(), picture.end()) > 1 &&
                       (*picture.begin() == kThumbnails || *picture.begin() == kPortraits);
  return !isBelow || std::find(picture.begin(), picture.end(), "..") != picture.end();
}

std::vector<std::string> picturesOf(const nlohmann::ordered_json& line) {
  std::vector<std::string> files;
  if (line.contains("thumbnail")) {
    files.push_back(line["thumbnail"]);
  }
  for (const auto& face : line.value("faces", nlohmann::ordered_json::array())) {
    if (face.contains("portrait")) {
      files.push_back(face["portrait"]);
    }
  }
  return files;
}

} // namespace qorfaces
