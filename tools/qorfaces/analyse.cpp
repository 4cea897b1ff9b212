#include "analyse.h"

#include "annotation.h"
#include "calls.h"
#include "cutout.h"
#include "group_photo.h"
#include "new_copy.h"

#include <qorocv460/qorocv460.h>

namespace qorfaces {

namespace {

using MaybeAnalysis = std::optional<Analysis>; // nothing: the photograph cannot be read

MaybeAnalysis analysisOf(const Call& call) {
  if (call.found == QOROCV460_UNREADABLE) {
    return std::nullopt;
  }
  return Analysis{call.width, call.height, call.found, facesOf(call)};
}

// The functions that report masks and tiles report head centres, too, asked or not.
void dropHeadCentres(std::vector<Face>& faces) {
  for (Face& face : faces) {
    face.headCentre.reset();
  }
}

MaybeAnalysis analyseGroup(const std::string& photo, const Settings& settings) {
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
    annotateGroup(photo, settings.annotatedCopy, analysis.faces);
  }
  return analysis;
}

Settings annotatedAt(const std::string& copy, Settings settings) {
  settings.annotatedCopy = copy;
  return settings;
}

// The functions that report head centres and masks draw nothing: the copy comes from their sibling.
void annotate(const std::string& photo, const Settings& settings, const Analysis& analysis) {
  if (settings.annotatedCopy.empty()) {
    return;
  }
  const NewCopy copy(settings.annotatedCopy);
  callInSlot(photo, annotatedAt(copy.path(), settings));
  if (settings.headCentre) {
    markHeadCentres(copy.path(), analysis.faces);
  }
  copy.putInPlace();
}

MaybeAnalysis analyseWithMask(const std::string& photo, const Settings& settings) {
  const MaskedCall masked = callWithMask(photo, settings);
  MaybeAnalysis analysis = analysisOf(masked.call);
  if (!analysis) {
    return std::nullopt;
  }
  if (!settings.headCentre) {
    dropHeadCentres(analysis->faces);
  }
  annotate(photo, settings, *analysis);
  writeCutOuts(photo, settings, masked);
  return analysis;
}

MaybeAnalysis analyseWithHeadCentres(const std::string& photo, const Settings& settings) {
  MaybeAnalysis analysis = analysisOf(callWithoutMask(photo, settings));
  if (analysis) {
    annotate(photo, settings, *analysis);
  }
  return analysis;
}

MaybeAnalysis analysePlain(const std::string& photo, const Settings& settings) {
  const NewCopy copy(settings.annotatedCopy);
  MaybeAnalysis analysis = analysisOf(callWithoutMask(photo, annotatedAt(copy.path(), settings)));
  if (analysis) {
    copy.putInPlace();
  }
  return analysis;
}

} // namespace

MaybeAnalysis analyse(const std::string& photo, const Settings& settings) {
  if (settings.tiles) {
    return analyseGroup(photo, settings);
  }
  if (wantsMask(settings)) {
    return analyseWithMask(photo, settings);
  }
  return settings.headCentre ? analyseWithHeadCentres(photo, settings)
                             : analysePlain(photo, settings);
}

} // namespace qorfaces
