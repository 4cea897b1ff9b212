#include "records.h"
#include "slots.h"

#include <clocale>
#include <exception>
#include <filesystem>
#include <qorocv460/client.h>

namespace qorocv::client {

namespace {

Error unreadable() {
  return {ErrorKind::unreadable, "the file cannot be read as a picture"};
}

Error notAnswered(const char* why) {
  return {ErrorKind::library, why};
}

/// The library's exceptions as errors. `call` returns a Result.
template <class Call> auto withoutExceptions(Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const std::exception& exception) {
    const std::string text = exception.what();
    return Error{ErrorKind::library, text.substr(0, text.find_last_not_of('\n') + 1)};
  }
}

/// `call` with a slot or the shared pair, if the calling thread may use it for that detector.
template <class Call> auto workingOn(int slot, Detector detector, Call call) -> decltype(call()) {
  const Work work(slot, detector);
  if (work.refusal()) {
    return *work.refusal();
  }
  return withoutExceptions(call);
}

int kindOf(Detector detector) {
  return detector == Detector::ssd ? QOROCV460_CAFFE : QOROCV460_TENSORFLOW;
}

void callSharedPair(const std::string& path, const Request& request, Records& records) {
  const auto call = request.landmarks ? processImage : findQORFaces;
  records.found = call(path.c_str(), request.annotatedCopy.c_str(), records.values.data(),
                       &records.count, request.maxSide, false, &records.width, &records.height);
}

void callForHeadCentres(const std::string& path, const Request& request, int slot,
                        Records& records) {
  records.found =
      request.detector == Detector::haar
          ? findQORFacesHAARInTread_TR02(path.c_str(), records.values.data(), &records.count, slot,
                                         request.maxSide, nullptr, &records.width, &records.height)
          : findQORFacesDUNInTread_TR02(path.c_str(), records.values.data(), &records.count,
                                        kindOf(request.detector), slot, request.maxSide, nullptr,
                                        &records.width, &records.height);
}

// Only the siblings that draw take a copy's place; the others do less work.
void callForFaces(const std::string& path, const Request& request, int slot, Records& records) {
  if (request.detector == Detector::haar) {
    records.found = findQORFacesInTread01(path.c_str(), records.values.data(), &records.count, slot,
                                          request.maxSide, &records.width, &records.height);
  } else {
    records.found = findQORFacesDUNInTread01(path.c_str(), records.values.data(), &records.count,
                                             kindOf(request.detector), slot, request.maxSide,
                                             &records.width, &records.height);
  }
}

void callForCopy(const std::string& path, const Request& request, int slot, Records& records) {
  const char* const copy = request.annotatedCopy.c_str();
  if (request.detector == Detector::haar) {
    records.found =
        findQORFacesInTreadDebug(path.c_str(), copy, records.values.data(), &records.count, slot,
                                 request.maxSide, false, &records.width, &records.height);
  } else {
    records.found = findQORFacesDUNInTread01Debug(path.c_str(), copy, false, records.values.data(),
                                                  &records.count, kindOf(request.detector), slot,
                                                  request.maxSide, &records.width, &records.height);
  }
}

/// Nothing where a function of the library answers the request.
std::optional<Error> refusal(const Request& request, int slot) {
  if (request.headCentres == HeadCentres::byMask) {
    return notAnswered("head centres by mask come with the masks");
  }
  if (slot == kSharedPair &&
      (request.detector != Detector::haar || request.headCentres != HeadCentres::none)) {
    return notAnswered("the shared pair has the Haar cascade alone, and no head centres");
  }
  if (slot != kSharedPair && request.landmarks) {
    return notAnswered("all landmarks come from the shared pair alone");
  }
  if (request.headCentres != HeadCentres::none && !request.annotatedCopy.empty()) {
    return notAnswered("no copy is drawn where head centres are found");
  }
  return std::nullopt;
}

} // namespace

int placeModels(std::string directory) {
  constexpr auto systems = static_cast<char>(std::filesystem::path::preferred_separator);
  if (!directory.empty() && directory.back() != '/' && directory.back() != systems) {
    directory += '/';
  }
  // The library reads it in the current locale, and is in the user's from the first photograph on.
  std::setlocale(LC_ALL, "");
  return initModelsAtPath(directory.c_str());
}

std::optional<Error> loadSharedPair() {
  const Result<int> loaded =
      workingOn(kSharedPair, Detector::haar, []() -> Result<int> { return initDetector(); });
  return loaded ? std::nullopt : std::optional<Error>(loaded.error());
}

Result<Photo> analyse(const std::string& path, const Request& request, int slot) {
  if (const std::optional<Error> refused = refusal(request, slot)) {
    return *refused;
  }
  return workingOn(slot, request.detector, [&]() -> Result<Photo> {
    Records records(request.landmarks                              ? Layout::landmarks
                    : request.headCentres == HeadCentres::byColour ? Layout::headCentre
                                                                   : Layout::face);
    if (slot == kSharedPair) {
      callSharedPair(path, request, records);
    } else if (request.headCentres == HeadCentres::byColour) {
      callForHeadCentres(path, request, slot, records);
    } else if (request.annotatedCopy.empty()) {
      callForFaces(path, request, slot, records);
    } else {
      callForCopy(path, request, slot, records);
    }
    if (records.found == QOROCV460_UNREADABLE) {
      return unreadable();
    }
    return photoOf(records, request.maxSide, {});
  });
}

Result<MaskedPhoto> analyseWithMasks(const std::string& path, const Request& request, int slot) {
  if (slot == kSharedPair) {
    return notAnswered("person masks take a slot");
  }
  return workingOn(slot, request.detector, [&]() -> Result<MaskedPhoto> {
    Records records(Layout::headCentre);
    Masks masks;
    masks.view.resize(QOROCV460_VIEW_BYTES);
    masks.mask.resize(QOROCV460_MASK_BYTES);
    masks.cropMask.resize(QOROCV460_MASK_BYTES);
    if (request.detector == Detector::haar) {
      records.found = findQORFacesHAARInTreadWithMask02(
          path.c_str(), records.values.data(), &records.count, 0, slot, request.maxSide, 0,
          &records.width, &records.height, masks.view.data(), masks.mask.data(),
          masks.cropMask.data(), masks.cropBox);
    } else {
      records.found = findQORFacesDUNInTreadWithMask02(
          path.c_str(), records.values.data(), &records.count, kindOf(request.detector), slot,
          request.maxSide, 0, &records.width, &records.height, masks.view.data(), masks.mask.data(),
          masks.cropMask.data(), masks.cropBox);
    }
    if (records.found == QOROCV460_UNREADABLE) {
      return unreadable();
    }
    return MaskedPhoto{photoOf(records, request.maxSide, masks.cropBox[1]), std::move(masks)};
  });
}

Result<Tile> analyseTile(const std::string& path, const Cell& cell, const Request& request,
                         int slot) {
  if (request.detector == Detector::haar || slot == kSharedPair) {
    return notAnswered("tiles are looked at with an SSD network, on a slot");
  }
  return workingOn(slot, request.detector, [&]() -> Result<Tile> {
    Records records(Layout::headCentre);
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    records.found = findQORMulitFacesDUNInTread_TR02(
        path.c_str(), records.values.data(), &records.count, cell.column, cell.columns, cell.row,
        cell.rows, &records.width, &records.height, &left, &top, kindOf(request.detector), slot,
        request.maxSide, 0, &width, &height);
    if (records.found == QOROCV460_UNREADABLE) {
      return unreadable();
    }
    const auto inPhoto = [&](const Point& inTile) {
      return Point{(left + inTile.x * records.width) / width,
                   (top + inTile.y * records.height) / height};
    };
    Tile tile{{inPhoto({0, 0}), inPhoto({1, 1})}, photoOf(records, request.maxSide, {})};
    tile.photo.width = width;
    tile.photo.height = height;
    for (Face& face : tile.photo.faces) {
      for (Point* const point : {&face.box.leftTop, &face.box.rightBottom, &face.noseBridge,
                                 &face.chin, &*face.headCentre}) {
        *point = inPhoto(*point);
      }
    }
    return tile;
  });
}

} // namespace qorocv::client
