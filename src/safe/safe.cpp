// The functions of QOROCV460Safe: calls of the nineteen, each with a guard around it, in the order
// of the public headers, which document them.
#include "qorocv460/safe.h"

#include "api/host_flag.h"
#include "api/model_report.h"
#include "models/model_names.h"
#include "safe/guard.h"

#include <clocale>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

using namespace qorocv;
using namespace qorocv::safe;

namespace {

// Room for the names of all seven; a plain array for the reason of the last error's.
constexpr std::size_t kNamesSize = 1024;
thread_local char missingNames[kNamesSize];

/// What stands before the models' short names. An empty directory is the current one.
std::string asPrefix(const char* directory) {
  std::string prefix = directory == nullptr ? "" : directory;
#ifdef _WIN32
  constexpr std::string_view separators = "/\\";
#else
  constexpr std::string_view separators = "/";
#endif
  if (!prefix.empty() && separators.find(prefix.back()) == std::string_view::npos) {
    prefix += '/';
  }
  return prefix;
}

} // namespace

const char* qorocv460_version() {
  return QOROCV460_VERSION;
}

const char* qorocv460_lastError() {
  return rememberedError();
}

const char* qorocv460_missingModels(int code) {
  std::size_t length = 0;
  missingNames[0] = '\0';
  for (std::size_t i = 0; i < kModelCount && code > 0; ++i, code /= 10) {
    if (code % 10 != 0) {
      const ModelFileName& name = kModelFileNames[i];
      length += static_cast<std::size_t>(std::snprintf(&missingNames[length], kNamesSize - length,
                                                       "%s%s (%s.%s)", length == 0 ? "" : ", ",
                                                       name.shortName, name.stem, name.extension));
    }
  }
  return missingNames;
}

int qorocv460_initModelsAtPath(const char* directory) {
  return guarded(kAllDetectors, [&] {
    std::setlocale(LC_ALL, "");
    return initModelsAtPath(asPrefix(directory).c_str());
  });
}

int qorocv460_initModelNames() {
  return guarded(kAllDetectors, [] {
    // Where it cannot create the report, initModelNames ends the process.
    if (!createReport().good()) {
      throw std::runtime_error(std::string("cannot create ") + reportFilePath());
    }
    return initModelNames();
  });
}

#define QOROCV460_SAFE(function, detectors, parameters, arguments)                                 \
  int qorocv460_##function parameters {                                                            \
    return guarded(detectors, [&] { return function arguments; });                                 \
  }

QOROCV460_SAFE(findFaces, kNoDetectors, (), ())

QOROCV460_SAFE(testPass, kNoDetectors, (double* values, int* count), (values, count))

QOROCV460_SAFE(initDetector, kSharedPair, (), ())

QOROCV460_SAFE(findQORFaces, kSharedPair,
               (const char* imagePath, const char* outputPath, double* results, int* resultCount,
                int maxSide, bool show, int* width, int* height),
               (imagePath, outputPath, results, resultCount, maxSide, isSet(show), width, height))

QOROCV460_SAFE(processImage, kSharedPair,
               (const char* imagePath, const char* outputPath, double* results, int* resultCount,
                int maxSide, bool show, int* width, int* height),
               (imagePath, outputPath, results, resultCount, maxSide, isSet(show), width, height))

QOROCV460_SAFE(showImage, kNoDetectors, (const char* imagePath, int* width, int* height),
               (imagePath, width, height))

QOROCV460_SAFE(findQORFacesInTread01, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int slot, int maxSide,
                int* width, int* height),
               (imagePath, results, resultCount, slot, maxSide, width, height))

QOROCV460_SAFE(findQORFacesInTreadDebug, slotOf(slot),
               (const char* imagePath, const char* outputPath, double* results, int* resultCount,
                int slot, int maxSide, bool show, int* width, int* height),
               (imagePath, outputPath, results, resultCount, slot, maxSide, isSet(show), width,
                height))

QOROCV460_SAFE(findQORFacesHAARInTread_TR02, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int slot, int maxSide,
                void* reserved, int* width, int* height),
               (imagePath, results, resultCount, slot, maxSide, reserved, width, height))

QOROCV460_SAFE(findQORFacesDUNInTread01, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int modelKind, int slot,
                int maxSide, int* width, int* height),
               (imagePath, results, resultCount, modelKind, slot, maxSide, width, height))

QOROCV460_SAFE(findQORFacesDUNInTread01Debug, slotOf(slot),
               (const char* imagePath, const char* outputPath, bool show, double* results,
                int* resultCount, int modelKind, int slot, int maxSide, int* width, int* height),
               (imagePath, outputPath, isSet(show), results, resultCount, modelKind, slot, maxSide,
                width, height))

QOROCV460_SAFE(findQORFacesDUNInTread02, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int modelKind, int slot,
                int maxSide, int* width, int* height),
               (imagePath, results, resultCount, modelKind, slot, maxSide, width, height))

QOROCV460_SAFE(findQORFacesDUNInTread_TR02, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int modelKind, int slot,
                int maxSide, void* reserved, int* width, int* height),
               (imagePath, results, resultCount, modelKind, slot, maxSide, reserved, width, height))

QOROCV460_SAFE(findQORFacesDUNInTreadWithMask01, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int modelKind, int slot,
                int maxSide, intptr_t reserved, int* width, int* height, unsigned char* viewPixels,
                unsigned char* maskPixels),
               (imagePath, results, resultCount, modelKind, slot, maxSide, reserved, width, height,
                viewPixels, maskPixels))

QOROCV460_SAFE(findQORFacesDUNInTreadWithMask02, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int modelKind, int slot,
                int maxSide, intptr_t reserved, int* width, int* height, unsigned char* viewPixels,
                unsigned char* maskPixels, unsigned char* cropMaskPixels, double* cropBox),
               (imagePath, results, resultCount, modelKind, slot, maxSide, reserved, width, height,
                viewPixels, maskPixels, cropMaskPixels, cropBox))

QOROCV460_SAFE(findQORFacesHAARInTreadWithMask02, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int modelKind, int slot,
                int maxSide, int reserved, int* width, int* height, unsigned char* viewPixels,
                unsigned char* maskPixels, unsigned char* cropMaskPixels, double* cropBox),
               (imagePath, results, resultCount, modelKind, slot, maxSide, reserved, width, height,
                viewPixels, maskPixels, cropMaskPixels, cropBox))

QOROCV460_SAFE(findQORMulitFacesDUNInTread_TR02, slotOf(slot),
               (const char* imagePath, double* results, int* resultCount, int tileCol, int gridCols,
                int tileRow, int gridRows, int* tileWidth, int* tileHeight, int* tileLeft,
                int* tileTop, int modelKind, int slot, int maxSide, intptr_t reserved, int* width,
                int* height),
               (imagePath, results, resultCount, tileCol, gridCols, tileRow, gridRows, tileWidth,
                tileHeight, tileLeft, tileTop, modelKind, slot, maxSide, reserved, width, height))
