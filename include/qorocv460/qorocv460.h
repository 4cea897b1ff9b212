/* QOROCV460: faces, landmarks and head measures of a photograph, through flat C functions.
 *
 * Common to all functions
 *   Text       NUL-terminated UTF-8. A null path reads as an empty one.
 *   Memory     Every array and variable belongs to the caller; the library never hands out memory.
 *   Fractions  Coordinates are fractions of the photograph's own width (x) and height (y): 0 at the
 *              left or top edge, 1 at the right or bottom edge. Boxes and points may reach beyond
 *              both. They are computed in single precision and widened.
 *   Errors     Where a model cannot be read or a picture cannot be worked on, OpenCV's C++
 *              exception (cv::Exception, a std::exception) leaves the function.
 *   Locale     Every function that takes a photograph switches the process to the user's locale,
 *              setlocale(LC_ALL, ""), and leaves it there: paths are opened in that locale's
 *              encoding.
 *   Models     initModelNames or initModelsAtPath is called once, before the first detection and
 *              before any thread that detects is started. Detectors are loaded when first needed
 *              and kept.
 */
#ifndef QOROCV460_H
#define QOROCV460_H

#include <stdbool.h>
#include <stdint.h>

#if defined(_WIN32) && defined(QOROCV460_BUILDING)
#define QOROCV460_API __declspec(dllexport)
#elif defined(_WIN32)
#define QOROCV460_API __declspec(dllimport)
#else
#define QOROCV460_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Sizes of the caller's arrays, in values. A results array holds the number of landmark sets at
 * [0] and at most QOROCV460_MAX_RECORDS records behind it, whatever capacity the caller states. */
enum {
  QOROCV460_MAX_RECORDS = 30,
  QOROCV460_TEST_VALUES = 68,                                                 /* testPass */
  QOROCV460_FACE_RECORD = 8,                                                  /* box, two points */
  QOROCV460_FACE_RESULTS = 1 + QOROCV460_MAX_RECORDS * QOROCV460_FACE_RECORD, /* 241 */
  QOROCV460_HEAD_CENTRE_RECORD = 10, /* box, three points */
  QOROCV460_HEAD_CENTRE_RESULTS =
      1 + QOROCV460_MAX_RECORDS * QOROCV460_HEAD_CENTRE_RECORD, /* 301 */
  QOROCV460_LANDMARK_RECORD = 140,                              /* box, 68 points */
  QOROCV460_LANDMARK_RESULTS = 1 + QOROCV460_MAX_RECORDS * QOROCV460_LANDMARK_RECORD, /* 4201 */
  QOROCV460_VIEW_SIDE = 1000,                                           /* pixels of four bytes */
  QOROCV460_VIEW_BYTES = 4 * QOROCV460_VIEW_SIDE * QOROCV460_VIEW_SIDE, /* 4,000,000 */
  QOROCV460_MASK_SIDE = 192,                                            /* pixels of four bytes */
  QOROCV460_MASK_BYTES = 4 * QOROCV460_MASK_SIDE * QOROCV460_MASK_SIDE, /* 147,456 */
  QOROCV460_CROP_BOX = 4
};

/* Kept for old hosts; does nothing.
 * Returns 0. */
QOROCV460_API int findFaces(void);

/* Fills an array with known numbers, so that a host can test its binding.
 *   values  out, QOROCV460_TEST_VALUES doubles: values[i] = i * 0.01 + i
 *   count   out: 68
 * Returns 68. Neither pointer is checked. */
QOROCV460_API int testPass(double* values, int* count);

/* Sets the paths of all seven models to `directory` followed by their short names:
 * model01.prototxt, model02.caffemodel, model03.pbtxt, model04.pb, model05.yaml, model06.xml,
 * model07.onnx.
 *   directory  in: ends in a path separator, since none is added. Read in the current locale, which
 *              this function does not switch: before the first photograph that is the "C" locale,
 *              unless the host has set another, and a directory that the locale cannot represent
 *              reads as empty.
 * Returns 0 when all seven can be opened; otherwise one decimal digit 1 for each that cannot,
 * model 01 rightmost (100000: model 06 alone; 1111111: none can be opened). The paths are set in
 * any case. Detectors that are already loaded stay, except that initDetector reloads the shared
 * pair.
 * Threads: none may detect meanwhile. */
QOROCV460_API int initModelsAtPath(const char* directory);

/* Sets the paths of models 01 to 06 to the library's own directory and their public names:
 * deploy.prototxt, res10_300x300_ssd_iter_140000_fp16.caffemodel, opencv_face_detector.pbtxt,
 * opencv_face_detector_uint8.pb, lbfmodel.yaml, haarcascade_frontalface_alt.xml. Model 07 keeps
 * its path (at first human_segmentation_pphumanseg_2023mar.onnx in the current directory).
 * Writes a report to C:\Temp\DeleteIt\info.txt (Windows) or /tmp/DeleteIt/info.txt. The caller
 * makes that directory: where the report cannot be created, THE PROCESS ENDS with exit code 1
 * after a message on standard error.
 * Returns how many of the six cannot be opened, 0 to 6.
 * Threads: none may detect meanwhile. */
QOROCV460_API int initModelNames(void);

/* Loads the shared pair (cascade and landmark fitter of findQORFaces and processImage) from the
 * current model paths, also where it is loaded already.
 * Returns 0; a missing cascade shows at the next detection, as an exception.
 * Threads: none may use the shared pair meanwhile. */
QOROCV460_API int initDetector(void);

/* Finds the faces of a photograph with the Haar cascade and reports box, nose bridge and chin of
 * each.
 *   imagePath    in: the photograph
 *   outputPath   in: where to write the scaled picture, with boxes and landmarks drawn if the fit
 *                succeeded; the extension chooses the format. Null, empty or one byte long: no copy
 *   results      out, QOROCV460_FACE_RESULTS doubles: [0] the number of landmark sets; then per
 *                face left, top, right, bottom of its box, landmark 27 (top of the nose bridge) x,
 *                y, landmark 8 (chin) x, y, all fractions
 *   resultCount  in: at least 1, not otherwise used; out: 1 + 8 * records, or 0 when no face was
 *                fitted
 *   maxSide      in: length in pixels that the longer side is scaled to before detection, enlarging
 *                included; below 1 the photograph's own
 *   show         in: any byte but 0 shows the picture in the "Display window", drawn as the copy
 *                is, and waits for a key
 *   width        out: columns of the photograph as read. Not checked for null
 *   height       out: rows of the photograph as read. Not checked for null
 * Returns the number of boxes found, not limited to 30; 0 at once, nothing touched, where results
 * or resultCount is null or *resultCount below 1; -1 where the photograph cannot be read, after
 * the line "Could not open or find the image" on standard output and with every output untouched.
 * Where no face is found or fitted, results stays untouched and *resultCount becomes 0.
 * Threads: one at a time among findQORFaces, processImage and initDetector. */
QOROCV460_API int findQORFaces(const char* imagePath, const char* outputPath, double* results,
                               int* resultCount, int maxSide, bool show, int* width, int* height);

/* findQORFaces with all 68 landmarks.
 *   results      out, QOROCV460_LANDMARK_RESULTS doubles: [0] the number of landmark sets; then per
 *                face left, top, right, bottom of its box and landmarks 0 to 67, x before y, all
 *                fractions
 *   resultCount  in: at least 1; out: 1 + 140 * records, or 0 when no face was fitted
 * Everything else as for findQORFaces. */
QOROCV460_API int processImage(const char* imagePath, const char* outputPath, double* results,
                               int* resultCount, int maxSide, bool show, int* width, int* height);

/* Shows a photograph at its own size in the "Display window" and waits for a key.
 *   imagePath  in: the photograph
 *   width      out: its columns. Not checked for null
 *   height     out: its rows. Not checked for null
 * Returns 0 when it was shown; -1 where it cannot be read, after the line "Could not open or find
 * the image" on standard output and with both outputs untouched.
 * Threads: the caller's must be one that may own a window. */
QOROCV460_API int showImage(const char* imagePath, int* width, int* height);

/* Slots. The functions below keep their detectors in nine slots. A call names one, 1 to 9; every
 * other number, negative ones included, means slot 1. A slot loads what a call needs when it first
 * needs it and keeps it. One thread at a time may use a slot; calls on different slots share no
 * detector and may run side by side. */

/* Finds the faces of a photograph with the Haar cascade of a slot and reports box, nose bridge and
 * chin of each. Draws, shows and writes nothing.
 *   imagePath    in: the photograph
 *   results      out, QOROCV460_FACE_RESULTS doubles: [0] the number of landmark sets; then per
 *                face left, top, right, bottom of its box, landmark 27 (top of the nose bridge) x,
 *                y, landmark 8 (chin) x, y, all fractions
 *   resultCount  in: at least 1, not otherwise used; out: 1 + 8 * records, or 0 when no face was
 *                fitted
 *   slot         in: the slot, 1 to 9
 *   maxSide      in: length in pixels that the longer side is scaled to before detection, enlarging
 *                included; below 1 the photograph's own
 *   width        out: columns of the photograph as read. Not checked for null
 *   height       out: rows of the photograph as read. Not checked for null
 * Returns the number of boxes found, not limited to 30, also where the fit failed; 0 at once,
 * nothing touched, where results or resultCount is null or *resultCount below 1; -1 where the
 * photograph cannot be read, after the line "Could not open or find the image" on standard output
 * and with every output untouched. Where no face is found or fitted, results stays untouched and
 * *resultCount becomes 0.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesInTread01(const char* imagePath, double* results, int* resultCount,
                                        int slot, int maxSide, int* width, int* height);

/* findQORFacesInTread01 that also draws, shows and writes the scaled picture.
 *   outputPath  in: where to write the picture, with boxes and light-blue landmarks drawn if the
 *               fit succeeded; the extension chooses the format. Null, empty or one byte long: no
 *               copy. A copy that cannot be written is no failure
 *   show        in: any byte but 0 shows the picture in the "Display window", drawn as the copy is,
 *               and waits for a key
 * Everything else as for findQORFacesInTread01. With show, the caller's thread must be one that
 * may own a window. */
QOROCV460_API int findQORFacesInTreadDebug(const char* imagePath, const char* outputPath,
                                           double* results, int* resultCount, int slot, int maxSide,
                                           bool show, int* width, int* height);

/* findQORFacesInTread01 with the centre of each head.
 *   results      out, QOROCV460_HEAD_CENTRE_RESULTS doubles: [0] the number of landmark sets; then
 *                per face the 8 values of findQORFacesInTread01, and x and y of a point halfway
 *                between chin and estimated top of the head, straight below or above the nose
 *                bridge: its x repeats landmark 27's. All fractions
 *   resultCount  in: at least 1; out: 1 + 10 * records, or 0 when no face was fitted
 *   reserved     in: never read
 * Everything else as for findQORFacesInTread01. */
QOROCV460_API int findQORFacesHAARInTread_TR02(const char* imagePath, double* results,
                                               int* resultCount, int slot, int maxSide,
                                               void* reserved, int* width, int* height);

/* Finds the faces of a photograph with the SSD network of a slot and reports box, nose bridge and
 * chin of each. Draws, shows and writes nothing.
 *   imagePath    in: the photograph
 *   results      out, QOROCV460_FACE_RESULTS doubles: [0] the number of landmark sets; then per
 *                face left, top, right, bottom of its box, landmark 27 (top of the nose bridge) x,
 *                y, landmark 8 (chin) x, y, all fractions
 *   resultCount  in: at least 1, not otherwise used; out: 1 + 8 * records, or 0 when no face was
 *                fitted
 *   modelKind    in: 1 reads the Caffe network into a slot that has none, any other value the
 *                TensorFlow one. A loaded network stays, but the order of the colours it is given
 *                follows this call's value: use one kind per slot
 *   slot         in: the slot, 1 to 9
 *   maxSide      in: length in pixels that the longer side is scaled to before detection, enlarging
 *                included; below 1 the photograph's own
 *   width        out: columns of the photograph as read. Not checked for null
 *   height       out: rows of the photograph as read. Not checked for null
 * Returns the number of boxes found, not limited to 30, also where the fit failed; 0 at once,
 * nothing touched, where results or resultCount is null or *resultCount below 1; -1 where the
 * photograph cannot be read, after the line "Could not open or find the image" on standard output
 * and with every output untouched. Where no face is found or fitted, results stays untouched and
 * *resultCount becomes 0.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesDUNInTread01(const char* imagePath, double* results, int* resultCount,
                                           int modelKind, int slot, int maxSide, int* width,
                                           int* height);

/* findQORFacesDUNInTread01 that also draws, shows and writes the scaled picture.
 *   outputPath  in: where to write the picture, with boxes drawn if faces were found and red
 *               landmarks if they were fitted; the extension chooses the format. Null, empty or one
 *               byte long: no copy. A copy that cannot be written is no failure
 *   show        in: any byte but 0 shows the picture in the "Display window", drawn as the copy is,
 *               and waits for a key
 * *resultCount is set after the window and the copy. Everything else as for
 * findQORFacesDUNInTread01. With show, the caller's thread must be one that may own a window. */
QOROCV460_API int findQORFacesDUNInTread01Debug(const char* imagePath, const char* outputPath,
                                                bool show, double* results, int* resultCount,
                                                int modelKind, int slot, int maxSide, int* width,
                                                int* height);

/* findQORFacesDUNInTread01 without landmarks: fast, and the landmark model is not needed.
 *   results      out, QOROCV460_FACE_RESULTS doubles: [0] the number of boxes; then per face left,
 *                top, right, bottom of its box, the middle of the box x, y, the middle of its
 *                bottom edge x, y, all fractions
 *   resultCount  in: at least 1; out: 1 + 8 * records, or 0 when no face was found
 * Everything else as for findQORFacesDUNInTread01. */
QOROCV460_API int findQORFacesDUNInTread02(const char* imagePath, double* results, int* resultCount,
                                           int modelKind, int slot, int maxSide, int* width,
                                           int* height);

/* findQORFacesDUNInTread01 with the centre of each head.
 *   results      out, QOROCV460_HEAD_CENTRE_RESULTS doubles: the records of
 *                findQORFacesHAARInTread_TR02
 *   resultCount  in: at least 1; out: 1 + 10 * records, or 0 when no face was fitted
 *   reserved     in: never read
 * Everything else as for findQORFacesDUNInTread01. */
QOROCV460_API int findQORFacesDUNInTread_TR02(const char* imagePath, double* results,
                                              int* resultCount, int modelKind, int slot,
                                              int maxSide, void* reserved, int* width, int* height);

/* Person masks. The functions below also tell the person from the background, and hand out pixels
 * for display: blocks of four bytes a pixel, row after row from the top, without header or padding.
 * None of their pointers but results and resultCount is checked for null. */

/* findQORFacesDUNInTread_TR02 with a person mask, which also tells where the top of each head is.
 *   results      out, QOROCV460_HEAD_CENTRE_RESULTS doubles: the records of
 *                findQORFacesDUNInTread_TR02; the last value of each, the y of the head's centre,
 *                goes by the mask
 *   resultCount  in: at least 1; out: 1 + 10 * records, or 0 when no face was fitted
 *   reserved     in: never read
 *   viewPixels   out, QOROCV460_VIEW_BYTES: the photograph stretched to 1000 x 1000 pixels; red,
 *                green, blue, alpha (255)
 *   maskPixels   out, QOROCV460_MASK_BYTES: the photograph's person mask, stretched to 192 x 192
 *                pixels; blue, green, red and alpha are 255 for a person, 0, 0, 0 and 255 for the
 *                background
 * Both blocks are written for every photograph that can be read, with faces or without. Everything
 * else as for findQORFacesDUNInTread_TR02. */
QOROCV460_API int findQORFacesDUNInTreadWithMask01(const char* imagePath, double* results,
                                                   int* resultCount, int modelKind, int slot,
                                                   int maxSide, intptr_t reserved, int* width,
                                                   int* height, unsigned char* viewPixels,
                                                   unsigned char* maskPixels);

/* findQORFacesDUNInTreadWithMask01 with a second, closer person mask of a photograph's only face.
 *   cropMaskPixels  out, QOROCV460_MASK_BYTES: the person mask of the surroundings of the face,
 *                   three times its box in each direction as far as the photograph goes, stretched
 *                   to 192 x 192 pixels as maskPixels is. The head's centre then goes by this mask.
 *                   Untouched where the box does not lie in the photograph, or is empty
 *   cropBox         out, QOROCV460_CROP_BOX doubles: left, top, width and height of those
 *                   surroundings, fractions; all 0.0 where the box does not lie in the photograph,
 *                   or is empty
 * Both stay untouched unless exactly one face was found. Everything else as for
 * findQORFacesDUNInTreadWithMask01. */
QOROCV460_API int findQORFacesDUNInTreadWithMask02(const char* imagePath, double* results,
                                                   int* resultCount, int modelKind, int slot,
                                                   int maxSide, intptr_t reserved, int* width,
                                                   int* height, unsigned char* viewPixels,
                                                   unsigned char* maskPixels,
                                                   unsigned char* cropMaskPixels, double* cropBox);

/* findQORFacesDUNInTreadWithMask02 with the faces that findQORFacesHAARInTread_TR02 finds.
 *   modelKind  in: never read
 *   reserved   in: never read
 * Everything else as for findQORFacesDUNInTreadWithMask02. */
QOROCV460_API int findQORFacesHAARInTreadWithMask02(const char* imagePath, double* results,
                                                    int* resultCount, int modelKind, int slot,
                                                    int maxSide, int reserved, int* width,
                                                    int* height, unsigned char* viewPixels,
                                                    unsigned char* maskPixels,
                                                    unsigned char* cropMaskPixels, double* cropBox);

/* findQORFacesDUNInTread_TR02 on one tile of a large photograph, in which faces are too small to be
 * found when all of it is looked at. The host lays a grid over the photograph and calls once for
 * each cell; tiles are one and a half cells wide and high, so that neighbours overlap by half a
 * cell. A face may be found in several tiles; telling so is the host's.
 *   results      out, QOROCV460_HEAD_CENTRE_RESULTS doubles: the records of
 *                findQORFacesDUNInTread_TR02, all values fractions of the tile's width and height
 *   resultCount  in: at least 1; out: 1 + 10 * records, or 0 when no face was fitted
 *   tileCol      in: the cell's column, from 1
 *   gridCols     in: the columns of the grid, at least 1
 *   tileRow      in: the cell's row, from 1
 *   gridRows     in: the rows of the grid, at least 1
 *   tileWidth    out: columns of the tile, in pixels of the photograph
 *   tileHeight   out: rows of the tile
 *   tileLeft     out: the tile's first column
 *   tileTop      out: the tile's first row
 *   maxSide      in: length in pixels that the longer side of the tile is scaled to before
 *                detection; below 1 its own
 *   reserved     in: never read
 *   width        out: columns of the photograph as read
 *   height       out: rows of the photograph as read
 * A cell beyond the grid's end gives the grid's last tile. Counts of 0, and other cells without a
 * tile in the photograph, leave as cv::Exception. No pointer but results and resultCount is checked
 * for null. Everything else as for findQORFacesDUNInTread_TR02. */
QOROCV460_API int findQORMulitFacesDUNInTread_TR02(const char* imagePath, double* results,
                                                   int* resultCount, int tileCol, int gridCols,
                                                   int tileRow, int gridRows, int* tileWidth,
                                                   int* tileHeight, int* tileLeft, int* tileTop,
                                                   int modelKind, int slot, int maxSide,
                                                   intptr_t reserved, int* width, int* height);

#ifdef __cplusplus
}
#endif

#endif /* QOROCV460_H */
