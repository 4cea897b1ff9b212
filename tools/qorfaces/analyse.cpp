#include "analyse.h"

#include "annotation.h"
#include "cutout.h"
#include "group_photo.h"
#include "name_for_library.h"
#include "new_copy.h"
#include "portraits.h"

namespace qorfaces {

namespace {

namespace client = qorocv::client;

using MaybeAnalysis = client::Result<Analysis>;

MaybeAnalysis analyseGroup(const std::string& photo, const Settings& settings) {
  client::Result<client::Photo> group = findInTiles(photo, *settings.tiles, requestOf(settings));
  if (!group) {
    return group.error();
  }
  Analysis analysis{std::move(*group), false};
  if (!settings.headCentre) {
    dropHeadCentres(analysis.faces);
  }
  if (!settings.annotatedCopy.empty()) {
    annotateGroup(photo, settings.annotatedCopy, analysis.faces);
  }
  return analysis;
}

client::Result<client::Photo> findAndDraw(const std::string& photo, const std::string& copy,
                                          client::Request request, int slot) {
  request.headCentres = client::HeadCentres::none;
  request.annotatedCopy = copy;
  return client::analyse(photo, request, slot);
}

// The functions that report head centres and masks draw nothing: the copy comes from their sibling.
// An error where that one fails.
std::optional<client::Error> annotate(const std::string& photo, const Settings& settings,
                                      const Analysis& analysis) {
  if (settings.annotatedCopy.empty()) {
    return std::nullopt;
  }
  const NewCopy copy(settings.annotatedCopy);
  const auto drawn = findAndDraw(photo, copy.path(), requestOf(settings), slotOf(settings));
  if (!drawn && drawn.error().kind == client::ErrorKind::library) {
    return drawn.error();
  }
  if (settings.headCentre) {
    markHeadCentres(copy.path(), analysis.faces);
  }
  copy.putInPlace();
  return std::nullopt;
}

MaybeAnalysis analyseWithMask(const std::string& photo, const Settings& settings) {
  const client::Result<client::MaskedPhoto> masked =
      client::analyseWithMasks(photo, requestOf(settings), slotOf(settings));
  if (!masked) {
    return masked.error();
  }
  Analysis analysis{masked->photo, false};
  if (!settings.headCentre) {
    dropHeadCentres(analysis.faces);
  }
  if (const auto error = annotate(photo, settings, analysis)) {
    return *error;
  }
  if (writesCutOut(settings)) {
    writeCutOuts(photo, settings, *masked);
  }
  return analysis;
}

MaybeAnalysis analyseWithHeadCentres(const std::string& photo, const Settings& settings) {
  client::Result<client::Photo> found =
      client::analyse(photo, requestOf(settings), slotOf(settings));
  if (!found) {
    return found.error();
  }
  Analysis analysis{std::move(*found), false};
  if (const auto error = annotate(photo, settings, analysis)) {
    return *error;
  }
  return analysis;
}

MaybeAnalysis analysePlain(const std::string& photo, const Settings& settings) {
  const NewCopy copy(settings.annotatedCopy);
  client::Result<client::Photo> found =
      findAndDraw(photo, copy.path(), requestOf(settings), slotOf(settings));
  if (!found) {
    return found.error();
  }
  copy.putInPlace();
  return Analysis{std::move(*found), false};
}

MaybeAnalysis find(const std::string& photo, const Settings& settings) {
  if (settings.tiles) {
    return analyseGroup(photo, settings);
  }
  if (wantsMask(settings)) {
    return analyseWithMask(photo, settings);
  }
  return settings.headCentre ? analyseWithHeadCentres(photo, settings)
                             : analysePlain(photo, settings);
}

} // namespace

MaybeAnalysis analyse(const std::string& photo, const Settings& settings) {
  const auto name = NameForLibrary::ofPath(std::filesystem::u8path(photo));
  MaybeAnalysis analysis = find(name.text(), settings);
  if (analysis && settings.crop && !analysis->faces.empty()) {
    analysis->portraits = writePortraits(readPhotograph(photo), *analysis, *settings.crop,
                                         portraitStem(photo, settings.portraits));
  }
  return analysis;
}

} // namespace qorfaces
