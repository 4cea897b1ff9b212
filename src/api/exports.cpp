// The exported functions, in the order of the public header, which documents them.
#include "api/export_table.h"
#include "api/host_flag.h"
#include "api/model_report.h"
#include "call/photograph.h"
#include "call/tile.h"
#include "drawing/annotated_picture.h"
#include "platform/platform.h"
#include "qorocv460/qorocv460.h"

using namespace qorocv;

int findFaces() {
  return 0;
}

int testPass(double* values, int* count) {
  for (int i = 0; i < QOROCV460_TEST_VALUES; ++i) {
    values[i] = i * 0.01 + i;
  }
  *count = QOROCV460_TEST_VALUES;
  return QOROCV460_TEST_VALUES;
}

int initModelsAtPath(const char* directory) {
  return modelRegistry().placeAt(utf8ToLocalePath(directory));
}

int initModelNames() {
  const std::filesystem::path library = ownModulePath();
  const int missing = modelRegistry().placeBeside(library);
  writeModelReport(modelRegistry(), library);
  return missing;
}

int initDetector() {
  reloadSharedDetectors();
  return 0;
}

int findQORFaces(const char* imagePath, const char* outputPath, double* results, int* resultCount,
                 int maxSide, bool show, int* width, int* height) {
  return detectAndAnnotate(exports::findQORFaces,
                           {imagePath, results, resultCount, maxSide, width, height}, {},
                           {outputPath, isSet(show)});
}

int processImage(const char* imagePath, const char* outputPath, double* results, int* resultCount,
                 int maxSide, bool show, int* width, int* height) {
  return detectAndAnnotate(exports::processImage,
                           {imagePath, results, resultCount, maxSide, width, height}, {},
                           {outputPath, isSet(show)});
}

int showImage(const char* imagePath, int* width, int* height) {
  adoptUserLocale();
  const cv::Mat photograph = readPhotograph(utf8ToLocalePath(imagePath));
  if (photograph.empty()) {
    return QOROCV460_UNREADABLE;
  }
  reportSize(photograph, width, height);
  showAndWait(photograph);
  return 0;
}

int findQORFacesInTread01(const char* imagePath, double* results, int* resultCount, int slot,
                          int maxSide, int* width, int* height) {
  return detectFaces(exports::findQORFacesInTread01,
                     {imagePath, results, resultCount, maxSide, width, height}, {slot});
}

int findQORFacesInTreadDebug(const char* imagePath, const char* outputPath, double* results,
                             int* resultCount, int slot, int maxSide, bool show, int* width,
                             int* height) {
  return detectAndAnnotate(exports::findQORFacesInTreadDebug,
                           {imagePath, results, resultCount, maxSide, width, height}, {slot},
                           {outputPath, isSet(show)});
}

int findQORFacesHAARInTread_TR02(const char* imagePath, double* results, int* resultCount, int slot,
                                 int maxSide, void* /*reserved*/, int* width, int* height) {
  return detectFaces(exports::findQORFacesHAARInTread_TR02,
                     {imagePath, results, resultCount, maxSide, width, height}, {slot});
}

int findQORFacesDUNInTread01(const char* imagePath, double* results, int* resultCount,
                             int modelKind, int slot, int maxSide, int* width, int* height) {
  return detectFaces(exports::findQORFacesDUNInTread01,
                     {imagePath, results, resultCount, maxSide, width, height}, {slot, modelKind});
}

int findQORFacesDUNInTread01Debug(const char* imagePath, const char* outputPath, bool show,
                                  double* results, int* resultCount, int modelKind, int slot,
                                  int maxSide, int* width, int* height) {
  return detectAndAnnotateNet(exports::findQORFacesDUNInTread01Debug,
                              {imagePath, results, resultCount, maxSide, width, height},
                              {slot, modelKind}, {outputPath, isSet(show)});
}

int findQORFacesDUNInTread02(const char* imagePath, double* results, int* resultCount,
                             int modelKind, int slot, int maxSide, int* width, int* height) {
  return detectBoxes({imagePath, results, resultCount, maxSide, width, height}, {slot, modelKind});
}

int findQORFacesDUNInTread_TR02(const char* imagePath, double* results, int* resultCount,
                                int modelKind, int slot, int maxSide, void* /*reserved*/,
                                int* width, int* height) {
  return detectFaces(exports::findQORFacesDUNInTread_TR02,
                     {imagePath, results, resultCount, maxSide, width, height}, {slot, modelKind});
}

int findQORFacesDUNInTreadWithMask01(const char* imagePath, double* results, int* resultCount,
                                     int modelKind, int slot, int maxSide, intptr_t /*reserved*/,
                                     int* width, int* height, unsigned char* viewPixels,
                                     unsigned char* maskPixels) {
  return detectFacesWithMask(exports::findQORFacesDUNInTreadWithMask01,
                             {imagePath, results, resultCount, maxSide, width, height},
                             {slot, modelKind}, {viewPixels, maskPixels, nullptr, nullptr});
}

int findQORFacesDUNInTreadWithMask02(const char* imagePath, double* results, int* resultCount,
                                     int modelKind, int slot, int maxSide, intptr_t /*reserved*/,
                                     int* width, int* height, unsigned char* viewPixels,
                                     unsigned char* maskPixels, unsigned char* cropMaskPixels,
                                     double* cropBox) {
  return detectFacesWithMask(exports::findQORFacesDUNInTreadWithMask02,
                             {imagePath, results, resultCount, maxSide, width, height},
                             {slot, modelKind}, {viewPixels, maskPixels, cropMaskPixels, cropBox});
}

int findQORFacesHAARInTreadWithMask02(const char* imagePath, double* results, int* resultCount,
                                      int /*modelKind*/, int slot, int maxSide, int /*reserved*/,
                                      int* width, int* height, unsigned char* viewPixels,
                                      unsigned char* maskPixels, unsigned char* cropMaskPixels,
                                      double* cropBox) {
  return detectFacesWithMask(exports::findQORFacesHAARInTreadWithMask02,
                             {imagePath, results, resultCount, maxSide, width, height}, {slot},
                             {viewPixels, maskPixels, cropMaskPixels, cropBox});
}

int findQORMulitFacesDUNInTread_TR02(const char* imagePath, double* results, int* resultCount,
                                     int tileCol, int gridCols, int tileRow, int gridRows,
                                     int* tileWidth, int* tileHeight, int* tileLeft, int* tileTop,
                                     int modelKind, int slot, int maxSide, intptr_t /*reserved*/,
                                     int* width, int* height) {
  return detectFacesInTile(exports::findQORMulitFacesDUNInTread_TR02,
                           {imagePath, results, resultCount, maxSide, tileWidth, tileHeight},
                           {slot, modelKind}, {tileCol, gridCols, tileRow, gridRows},
                           {tileLeft, tileTop, width, height});
}
