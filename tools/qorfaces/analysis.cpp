#include "analysis.h"

#include "cutout.h"
#include "picture_file.h"
#include "records.h"

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <filesystem>
#include <qorocv460/qorocv460.h>
#include <stdexcept>

namespace qorfaces {

namespace {

struct NumberedModel {
  int weight; // of its digit in what initModelsAtPath returns
  const char* name;
};

bool wantsMask(const Settings& settings) {
  return !settings.mask.empty() || !settings.cropMask.empty();
}

std::vector<NumberedModel> detectorModels(Detector detector) {
  constexpr NumberedModel landmarks{10000, "model05.yaml (landmarks)"};
  switch (detector) {
  case Detector::ssd:
    return {{1, "model01.prototxt (Caffe network)"},
            {10, "model02.caffemodel (its weights)"},
            landmarks};
  case Detector::ssdTf:
    return {
        {100, "model03.pbtxt (TensorFlow network)"}, {1000, "model04.pb (its weights)"}, landmarks};
  case Detector::haar:
    break;
  }
  return {landmarks, {100000, "model06.xml (face cascade)"}};
}

std::vector<NumberedModel> neededModels(const Settings& settings) {
  std::vector<NumberedModel> models = detectorModels(settings.detector);
  if (wantsMask(settings)) {
    models.push_back({1000000, "model07.onnx (person segmentation)"});
  }
  return models;
}

// The library ignores a copy that cannot be written; a user who asked for one wants to know.
class CopyWatch {
public:
  explicit CopyWatch(const std::string& path)
      : path_(std::filesystem::u8path(path)), before_(lastWrite()) {}

  void expectWritten() const {
    if (!path_.empty() && lastWrite() == before_) {
      throw std::runtime_error("cannot write the annotated copy " + path_.u8string());
    }
  }

private:
  std::optional<std::filesystem::file_time_type> lastWrite() const {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path_, error);
    if (error) {
      return std::nullopt;
    }
    return time;
  }

  std::filesystem::path path_;
  std::optional<std::filesystem::file_time_type> before_;
};

Layout layoutOf(const Settings& settings) {
  return settings.landmarks                           ? Layout::landmarks
         : settings.headCentre || wantsMask(settings) ? Layout::headCentre
                                                      : Layout::plain;
}

int modelKind(const Settings& settings) {
  return settings.detector == Detector::ssd ? QOROCV460_CAFFE : QOROCV460_TENSORFLOW;
}

int slotOf(const Settings& settings) {
  return settings.slot == 0 ? QOROCV460_FIRST_SLOT : settings.slot;
}

int findWithShared(const std::string& photo, Call& call, const Settings& settings) {
  const auto find = settings.landmarks ? processImage : findQORFaces;
  return find(photo.c_str(), settings.annotatedCopy.c_str(), call.results.data(), &call.count,
              settings.maxSide, false, &call.width, &call.height);
}

// Boxes, nose bridges and chins from a slot, and the annotated copy.
int findInSlot(const std::string& photo, Call& call, const Settings& settings) {
  if (settings.detector == Detector::haar) {
    return findQORFacesInTreadDebug(photo.c_str(), settings.annotatedCopy.c_str(),
                                    call.results.data(), &call.count, slotOf(settings),
                                    settings.maxSide, false, &call.width, &call.height);
  }
  return findQORFacesDUNInTread01Debug(
      photo.c_str(), settings.annotatedCopy.c_str(), false, call.results.data(), &call.count,
      modelKind(settings), slotOf(settings), settings.maxSide, &call.width, &call.height);
}

int findHeadCentresInSlot(const std::string& photo, Call& call, const Settings& settings) {
  if (settings.detector == Detector::haar) {
    return findQORFacesHAARInTread_TR02(photo.c_str(), call.results.data(), &call.count,
                                        slotOf(settings), settings.maxSide, nullptr, &call.width,
                                        &call.height);
  }
  return findQORFacesDUNInTread_TR02(photo.c_str(), call.results.data(), &call.count,
                                     modelKind(settings), slotOf(settings), settings.maxSide,
                                     nullptr, &call.width, &call.height);
}

/// What the exports with a person mask fill besides records.
struct Masks {
  std::vector<unsigned char> view = std::vector<unsigned char>(QOROCV460_VIEW_BYTES);
  std::vector<unsigned char> mask = std::vector<unsigned char>(QOROCV460_MASK_BYTES);
  std::vector<unsigned char> cropMask = std::vector<unsigned char>(QOROCV460_MASK_BYTES);
  double cropBox[QOROCV460_CROP_BOX] = {}; // no width: there is no closer mask
};

int findWithMask(const std::string& photo, Call& call, Masks& masks, const Settings& settings) {
  if (settings.detector == Detector::haar) {
    return findQORFacesHAARInTreadWithMask02(photo.c_str(), call.results.data(), &call.count, 0,
                                             slotOf(settings), settings.maxSide, 0, &call.width,
                                             &call.height, masks.view.data(), masks.mask.data(),
                                             masks.cropMask.data(), masks.cropBox);
  }
  return findQORFacesDUNInTreadWithMask02(photo.c_str(), call.results.data(), &call.count,
                                          modelKind(settings), slotOf(settings), settings.maxSide,
                                          0, &call.width, &call.height, masks.view.data(),
                                          masks.mask.data(), masks.cropMask.data(), masks.cropBox);
}

int find(const std::string& photo, Call& call, Masks& masks, const Settings& settings) {
  if (wantsMask(settings)) {
    return findWithMask(photo, call, masks, settings);
  }
  if (settings.headCentre) {
    return findHeadCentresInSlot(photo, call, settings);
  }
  return usesSlot(settings) ? findInSlot(photo, call, settings)
                            : findWithShared(photo, call, settings);
}

// The part of a picture that a closer mask covers.
cv::Rect closeUp(const double* cropBox, const cv::Size& picture) {
  const auto pixels = [](double fraction, int side) {
    return static_cast<int>(std::lround(fraction * side));
  };
  const cv::Rect part(pixels(cropBox[0], picture.width), pixels(cropBox[1], picture.height),
                      pixels(cropBox[2], picture.width), pixels(cropBox[3], picture.height));
  return part & cv::Rect({}, picture);
}

void writeCutOuts(const std::string& photo, const Settings& settings, const Masks& masks,
                  int found) {
  const cv::Mat picture = readPicture(photo);
  if (picture.empty()) {
    throw std::runtime_error("the photograph cannot be read again to cut out the person");
  }
  if (!settings.mask.empty()) {
    writePicture(settings.mask, cutOut(picture, masks.mask));
  }
  if (settings.cropMask.empty()) {
    return;
  }
  if (found != 1) {
    throw std::runtime_error("a closer mask takes exactly one face; there are " +
                             std::to_string(found));
  }
  const cv::Rect part = closeUp(masks.cropBox, picture.size());
  if (part.empty()) {
    throw std::runtime_error("the only face sticks out of the photograph: no closer mask of it");
  }
  writePicture(settings.cropMask, cutOut(picture(part), masks.cropMask));
}

void drawGroup(const std::string& photo, const Settings& settings, const Analysis& analysis) {
  cv::Mat picture = readPicture(photo);
  if (picture.empty()) {
    throw std::runtime_error("the photograph cannot be read again to draw on it");
  }
  const auto pixel = [&](const Point& point) {
    return cv::Point(cvRound(point.x * picture.cols), cvRound(point.y * picture.rows));
  };
  for (const Face& face : analysis.faces) {
    cv::rectangle(picture, pixel(face.leftTop), pixel(face.rightBottom), cv::Scalar(0, 255, 0), 2);
    if (face.headCentre) {
      cv::drawMarker(picture, pixel(*face.headCentre), cv::Scalar(0, 255, 255), cv::MARKER_CROSS, 8,
                     1, cv::LINE_AA);
    }
  }
  writePicture(settings.annotatedCopy, picture);
}

// The exports that report head centres and masks draw nothing: the copy comes from their sibling,
// and head centres are marked on it.
void annotateInSlot(const std::string& photo, const Settings& settings, const Analysis& analysis) {
  Call call;
  findInSlot(photo, call, settings);
  if (!settings.headCentre) {
    return;
  }
  cv::Mat picture = readPicture(settings.annotatedCopy);
  for (const Face& face : analysis.faces) {
    const cv::Point centre(cvRound(face.headCentre->x * picture.cols),
                           cvRound(face.headCentre->y * picture.rows));
    cv::drawMarker(picture, centre, cv::Scalar(0, 255, 255), cv::MARKER_CROSS, 20, 3, cv::LINE_AA);
  }
  if (!picture.empty()) {
    writePicture(settings.annotatedCopy, picture);
  }
}

} // namespace

bool usesSlot(const Settings& settings) {
  return settings.slot != 0 || settings.headCentre || settings.detector != Detector::haar ||
         wantsMask(settings);
}

std::vector<std::string> placeModels(std::string directory, const Settings& settings) {
  if (!std::filesystem::u8path(directory).filename().empty()) {
    directory += '/'; // it ended in a name
  }
  const int missing = initModelsAtPath(directory.c_str());
  std::vector<std::string> names;
  for (const NumberedModel& model : neededModels(settings)) {
    if (missing / model.weight % 10 != 0) {
      names.emplace_back(model.name);
    }
  }
  return names;
}

void loadModels(const Settings& settings) {
  if (!usesSlot(settings)) {
    initDetector();
  }
}

namespace {

void dropHeadCentres(std::vector<Face>& faces) {
  for (Face& face : faces) {
    face.headCentre.reset();
  }
}

std::optional<Analysis> analyseGroup(const std::string& photo, const Settings& settings) {
  auto group = findInTiles(photo, *settings.tiles, modelKind(settings), settings.maxSide);
  if (!group) {
    return std::nullopt;
  }
  const auto listed = static_cast<int>(group->faces.size());
  Analysis analysis{group->width, group->height, listed + group->unlisted, std::move(group->faces)};
  if (!settings.headCentre) {
    dropHeadCentres(analysis.faces);
  }
  if (!settings.annotatedCopy.empty()) {
    drawGroup(photo, settings, analysis);
  }
  return analysis;
}

} // namespace

std::optional<Analysis> analyse(const std::string& photo, const Settings& settings) {
  if (settings.tiles) {
    return analyseGroup(photo, settings);
  }
  const CopyWatch copy(settings.annotatedCopy);
  Call call;
  Masks masks;
  const int found = find(photo, call, masks, settings);
  if (found == QOROCV460_UNREADABLE) {
    return std::nullopt;
  }
  Analysis analysis{call.width, call.height, found, facesOf(call, layoutOf(settings))};
  if (!settings.headCentre) {
    dropHeadCentres(analysis.faces);
  }
  if (!settings.annotatedCopy.empty() && (settings.headCentre || wantsMask(settings))) {
    annotateInSlot(photo, settings, analysis);
  }
  copy.expectWritten();
  if (wantsMask(settings)) {
    writeCutOuts(photo, settings, masks, found);
  }
  return analysis;
}

} // namespace qorfaces
