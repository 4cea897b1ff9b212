#include "calls.h"

#include <qorocv460/qorocv460.h>

namespace qorfaces {

namespace {

int slotOf(const Settings& settings) {
  return settings.slot == 0 ? QOROCV460_FIRST_SLOT : settings.slot;
}

Call callShared(const std::string& photo, const Settings& settings) {
  Call call(settings.landmarks ? Layout::landmarks : Layout::plain);
  const auto find = settings.landmarks ? processImage : findQORFaces;
  call.found = find(photo.c_str(), settings.annotatedCopy.c_str(), call.results.data(), &call.count,
                    settings.maxSide, false, &call.width, &call.height);
  return call;
}

Call callForHeadCentres(const std::string& photo, const Settings& settings) {
  Call call(Layout::headCentre);
  call.found = settings.detector == Detector::haar
                   ? findQORFacesHAARInTread_TR02(photo.c_str(), call.results.data(), &call.count,
                                                  slotOf(settings), settings.maxSide, nullptr,
                                                  &call.width, &call.height)
                   : findQORFacesDUNInTread_TR02(
                         photo.c_str(), call.results.data(), &call.count, modelKind(settings),
                         slotOf(settings), settings.maxSide, nullptr, &call.width, &call.height);
  return call;
}

} // namespace

Call callInSlot(const std::string& photo, const Settings& settings) {
  Call call(Layout::plain);
  call.found = settings.detector == Detector::haar
                   ? findQORFacesInTreadDebug(photo.c_str(), settings.annotatedCopy.c_str(),
                                              call.results.data(), &call.count, slotOf(settings),
                                              settings.maxSide, false, &call.width, &call.height)
                   : findQORFacesDUNInTread01Debug(photo.c_str(), settings.annotatedCopy.c_str(),
                                                   false, call.results.data(), &call.count,
                                                   modelKind(settings), slotOf(settings),
                                                   settings.maxSide, &call.width, &call.height);
  return call;
}

Call callWithoutMask(const std::string& photo, const Settings& settings) {
  if (settings.headCentre) {
    return callForHeadCentres(photo, settings);
  }
  return usesSlot(settings) ? callInSlot(photo, settings) : callShared(photo, settings);
}

MaskedCall callWithMask(const std::string& photo, const Settings& settings) {
  MaskedCall masked{Call(Layout::headCentre), {}};
  auto& [call, masks] = masked;
  call.found =
      settings.detector == Detector::haar
          ? findQORFacesHAARInTreadWithMask02(photo.c_str(), call.results.data(), &call.count, 0,
                                              slotOf(settings), settings.maxSide, 0, &call.width,
                                              &call.height, masks.view.data(), masks.mask.data(),
                                              masks.cropMask.data(), masks.cropBox)
          : findQORFacesDUNInTreadWithMask02(
                photo.c_str(), call.results.data(), &call.count, modelKind(settings),
                slotOf(settings), settings.maxSide, 0, &call.width, &call.height, masks.view.data(),
                masks.mask.data(), masks.cropMask.data(), masks.cropBox);
  return masked;
}

} // namespace qorfaces
