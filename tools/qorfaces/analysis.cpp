#include "analysis.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <filesystem>
#include <qorocv460/qorocv460.h>
#include <stdexcept>

namespace qorfaces {

namespace {

constexpr int kUnreadable = -1;

struct NumberedModel {
  int weight; // of its digit in what initModelsAtPath returns
  const char* name;
};

std::vector<NumberedModel> neededModels(Detector detector) {
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

// The library ignores a copy that cannot be written; a user who asked for one wants to know.
class CopyWatch {
public:
  explicit CopyWatch(const std::string& path) : path_(path), before_(lastWrite()) {}

  void expectWritten() const {
    if (!path_.empty() && lastWrite() == before_) {
      throw std::runtime_error("cannot write the annotated copy " + path_.string());
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

Point pointAt(const double* values) {
  return {values[0], values[1]};
}

constexpr std::size_t kNoseBridge = 27;
constexpr std::size_t kChin = 8;

// The layouts differ in what follows the box.
Face faceOf(const double* record, const Settings& settings) {
  Face face{pointAt(record), pointAt(record + 2), pointAt(record + 4), pointAt(record + 6), {}, {}};
  if (settings.headCentre) {
    face.headCentre = pointAt(record + 8);
  }
  if (settings.landmarks) {
    for (int value = 4; value < QOROCV460_LANDMARK_RECORD; value += 2) {
      face.landmarks.push_back(pointAt(record + value));
    }
    face.noseBridge = face.landmarks[kNoseBridge];
    face.chin = face.landmarks[kChin];
  }
  return face;
}

int recordSize(const Settings& settings) {
  return settings.landmarks    ? QOROCV460_LANDMARK_RECORD
         : settings.headCentre ? QOROCV460_HEAD_CENTRE_RECORD
                               : QOROCV460_FACE_RECORD;
}

// One call of the library: the photograph and the variables that it fills.
struct Call {
  const char* photo;
  std::vector<double> results = std::vector<double>(QOROCV460_LANDMARK_RESULTS);
  int count = static_cast<int>(results.size());
  int width = 0;
  int height = 0;
};

int modelKind(const Settings& settings) {
  return settings.detector == Detector::ssd ? 1 : 2;
}

int findWithShared(Call& call, const Settings& settings) {
  const auto find = settings.landmarks ? processImage : findQORFaces;
  return find(call.photo, settings.annotatedCopy.c_str(), call.results.data(), &call.count,
              settings.maxSide, false, &call.width, &call.height);
}

// Boxes, nose bridges and chins from a slot, and the annotated copy.
int findInSlot(Call& call, const Settings& settings, int slot) {
  if (settings.detector == Detector::haar) {
    return findQORFacesInTreadDebug(call.photo, settings.annotatedCopy.c_str(), call.results.data(),
                                    &call.count, slot, settings.maxSide, false, &call.width,
                                    &call.height);
  }
  return findQORFacesDUNInTread01Debug(call.photo, settings.annotatedCopy.c_str(), false,
                                       call.results.data(), &call.count, modelKind(settings), slot,
                                       settings.maxSide, &call.width, &call.height);
}

int findHeadCentresInSlot(Call& call, const Settings& settings, int slot) {
  if (settings.detector == Detector::haar) {
    return findQORFacesHAARInTread_TR02(call.photo, call.results.data(), &call.count, slot,
                                        settings.maxSide, nullptr, &call.width, &call.height);
  }
  return findQORFacesDUNInTread_TR02(call.photo, call.results.data(), &call.count,
                                     modelKind(settings), slot, settings.maxSide, nullptr,
                                     &call.width, &call.height);
}

int find(Call& call, const Settings& settings) {
  if (!usesSlot(settings)) {
    return findWithShared(call, settings);
  }
  const int slot = settings.slot == 0 ? 1 : settings.slot;
  return settings.headCentre ? findHeadCentresInSlot(call, settings, slot)
                             : findInSlot(call, settings, slot);
}

// The exports that report head centres draw nothing: the copy comes from their sibling, and the
// centres are marked on it.
void annotateHeadCentres(const std::string& photo, const Settings& settings,
                         const Analysis& analysis) {
  Call call{photo.c_str()};
  findInSlot(call, settings, settings.slot == 0 ? 1 : settings.slot);
  cv::Mat picture = cv::imread(settings.annotatedCopy);
  for (const Face& face : analysis.faces) {
    const cv::Point centre(cvRound(face.headCentre->x * picture.cols),
                           cvRound(face.headCentre->y * picture.rows));
    cv::drawMarker(picture, centre, cv::Scalar(0, 255, 255), cv::MARKER_CROSS, 20, 3, cv::LINE_AA);
  }
  if (!picture.empty()) {
    cv::imwrite(settings.annotatedCopy, picture);
  }
}

} // namespace

bool usesSlot(const Settings& settings) {
  return settings.slot != 0 || settings.headCentre || settings.detector != Detector::haar;
}

std::vector<std::string> placeModels(std::string directory, const Settings& settings) {
  if (directory.back() != '/') {
    directory += '/';
  }
  const int missing = initModelsAtPath(directory.c_str());
  std::vector<std::string> names;
  for (const NumberedModel& model : neededModels(settings.detector)) {
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

std::optional<Analysis> analyse(const std::string& photo, const Settings& settings) {
  const CopyWatch copy(settings.annotatedCopy);
  Call call{photo.c_str()};
  Analysis analysis{};
  analysis.found = find(call, settings);
  if (analysis.found == kUnreadable) {
    return std::nullopt;
  }
  analysis.width = call.width;
  analysis.height = call.height;
  const int size = recordSize(settings);
  for (int start = 1; start + size <= call.count; start += size) {
    analysis.faces.push_back(faceOf(&call.results[static_cast<std::size_t>(start)], settings));
  }
  if (settings.headCentre && !settings.annotatedCopy.empty()) {
    annotateHeadCentres(photo, settings, analysis);
  }
  copy.expectWritten();
  return analysis;
}

} // namespace qorfaces
