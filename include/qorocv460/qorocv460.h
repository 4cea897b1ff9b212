/* QOROCV460: faces, landmarks and head measures of a photograph, through nineteen flat C functions.
 *
 * WHICH FUNCTION
 *
 *   records of                  faces by the Haar cascade          faces by the SSD network
 *   --------------------------  ---------------------------------  --------------------------------
 *   box, nose bridge, chin      findQORFacesInTread01              findQORFacesDUNInTread01
 *     and a picture of them     findQORFacesInTreadDebug           findQORFacesDUNInTread01Debug
 *     both, without slots       findQORFaces
 *   box alone, fastest                                             findQORFacesDUNInTread02
 *   box, all 68 landmarks       processImage
 *   box, nose bridge, chin and
 *     centre of the head by:
 *     the colours above it      findQORFacesHAARInTread_TR02       findQORFacesDUNInTread_TR02
 *     the colours, in a tile                                       findQORMulitFacesDUNInTread_TR02
 *     a person mask                                                findQORFacesDUNInTreadWithMask01
 *     a mask of an only face    findQORFacesHAARInTreadWithMask02  findQORFacesDUNInTreadWithMask02
 *
 *   findQORFaces and processImage also draw, and work on one thread at a time.
 *
 *   once, before all of them           initModelsAtPath or initModelNames
 *   to load the shared pair            initDetector
 *   to look at a photograph            showImage
 *   to test a binding                  testPass; findFaces does nothing
 *
 *   The network looks at every photograph at 300 x 300 pixels: its time hardly depends on the size,
 *   and it misses what is small in the photograph, for which there are tiles. The cascade looks at
 *   every pixel: it finds small faces, takes longer the larger the picture, and more often takes
 *   for a face what is none.
 *
 * WHAT THE NAMES SAY
 *
 *   HAAR       faces are found by the Haar cascade; so they are where neither HAAR nor DUN is said
 *   DUN        faces are found by the SSD network
 *   InTread    on one of nine slots, one thread each
 *   Mulit      for the many faces of a group photograph, tile by tile
 *   Debug      draws, shows and writes the picture
 *   01, 02     variants: DUNInTread02 fits no landmarks
 *   _TR02      with the centre of the head
 *   WithMask   with a person mask; WithMask02 with a closer one of an only face
 *
 * COMMON TO ALL FUNCTIONS
 *
 *   Text       NUL-terminated UTF-8. A null path reads as an empty one.
 *   Memory     Every array and variable belongs to the caller; the library never hands out memory
 *              and keeps no pointer.
 *   Errors     Where a model cannot be read or a picture cannot be worked on, OpenCV's C++
 *              exception (cv::Exception, a std::exception) leaves the function.
 *   Locale     Every function that takes a photograph switches the process to the user's locale,
 *              setlocale(LC_ALL, ""), and leaves it there: paths are opened in that locale's
 *              encoding.
 *   Numbers    Floating-point exceptions have to be masked, as C has them: a host in a language
 *              that unmasks them, such as Pascal, masks them first.
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

/* The version, here and nowhere else: the build reads it from this line. */
#define QOROCV460_VERSION "0.1.0"

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

/* What a function returns in place of a number of boxes. */
enum {
  QOROCV460_UNREADABLE = -1, /* the photograph cannot be read */
  QOROCV460_REJECTED = 0     /* the call has no room for results; also the count of no faces */
};

/* The slots are numbered from the first to the last. */
enum { QOROCV460_FIRST_SLOT = 1, QOROCV460_LAST_SLOT = 9 };

/* The kinds of SSD network: Caffe's, and TensorFlow's, for which every number but 1 stands. */
enum { QOROCV460_CAFFE = 1, QOROCV460_TENSORFLOW = 2 };

/* Landmarks are numbered from 0: 0 to 16 jaw, 17 to 26 eyebrows, 27 to 30 bridge of the nose, 31 to
 * 35 below the nose, 36 to 47 eyes, 48 to 67 lips. */
enum {
  QOROCV460_LANDMARKS = 68,
  QOROCV460_CHIN = 8,        /* tip of the chin */
  QOROCV460_NOSE_BRIDGE = 27 /* top of the nose bridge, between the eyes */
};

/* SHARED PARAMETERS. A parameter that a function's own comment does not name is one of these.
 *
 *   imagePath    in: the photograph
 *   outputPath   in: where to write the scaled picture as it is drawn; the extension chooses the
 *                format. Null, empty or one byte long: no copy. A copy that cannot be written
 *                because of its directory is no failure; an extension that names no format is an
 *                exception
 *   results      out: doubles, the number of landmark sets at [0] and records behind it. Each
 *                function names its array, which has its full size whatever *resultCount says
 *   resultCount  in: at least 1, not otherwise used; out: 1 + record size * records, the values
 *                written; 0 when there are none
 *   modelKind    in: QOROCV460_CAFFE reads the Caffe network into a slot that has none, any other
 *                value the TensorFlow one. A loaded network stays, but the order of the colours it
 *                is given follows this call's value: use one kind per slot
 *   slot         in: QOROCV460_FIRST_SLOT to QOROCV460_LAST_SLOT. Every other number, negative ones
 *                included, means slot 1
 *   maxSide      in: length in pixels that the longer side is scaled to before detection, enlarging
 *                included; below 1 the photograph's own
 *   show         in: any byte but 0 shows the picture in the "Display window", drawn as the copy
 *                is, and waits for a key. The caller's thread must be one that may own a window
 *   reserved     in: never read
 *   width        out: columns of the photograph as read
 *   height       out: rows of the photograph as read
 *
 * A path may be null, as above. Of the other pointers only results and resultCount are checked.
 *
 * RECORDS. At most QOROCV460_MAX_RECORDS, one behind the other from results[1]; loop by
 * *resultCount, since the number at [0] is not limited. Each begins with left, top, right and
 * bottom of the face's box. What follows are points, x before y:
 *
 *   face         QOROCV460_FACE_RECORD: landmark 27 (top of the nose bridge), landmark 8 (chin)
 *   head centre  QOROCV460_HEAD_CENTRE_RECORD: the same two, and the point halfway between the chin
 *                and the estimated top of the head, straight below or above the nose bridge: its x
 *                repeats landmark 27's
 *   landmark     QOROCV460_LANDMARK_RECORD: landmarks 0 to 67
 *
 * All values are fractions of the photograph's own width (x) and height (y): 0 at the left or top
 * edge, 1 at the right or bottom edge. Boxes and points may reach beyond both. They are computed in
 * single precision and widened.
 *
 * WHAT A DETECTION RETURNS. findQORFaces, processImage, and every function with a slot:
 *
 *   above 0               the boxes found, not limited to 30, also where no landmarks were fitted:
 *                         then results stays untouched and *resultCount becomes 0
 *   0                     no face was found: width, height and pixels are set, results stays
 *                         untouched and *resultCount becomes 0
 *   QOROCV460_REJECTED    results or resultCount is null, or *resultCount below 1: at once, with
 *                         nothing touched
 *   QOROCV460_UNREADABLE  after the line "Could not open or find the image" on standard output and
 *                         with every output untouched
 *
 * Where an exception leaves a detection, outputs may be written in part, and *resultCount tells
 * nothing. */

/* ---- Bindings ------------------------------------------------------------------------------- */

/* Kept for old hosts; does nothing.
 * Returns 0.
 * Threads: any. */
QOROCV460_API int findFaces(void);

/* Fills an array with known numbers, so that a host can test its binding.
 *   values  out, QOROCV460_TEST_VALUES doubles: values[i] = i * 0.01 + i
 *   count   out: QOROCV460_TEST_VALUES
 * Returns QOROCV460_TEST_VALUES. Neither pointer is checked for null.
 * Threads: any. */
QOROCV460_API int testPass(double* values, int* count);

/* ---- Models --------------------------------------------------------------------------------- */

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

/* ---- One thread: the shared pair of a cascade and a landmark fitter -------------------------- */

/* Loads the shared pair from the current model paths, also where it is loaded already. A detection
 * does so itself where the pair has no cascade.
 * Returns 0; a model that cannot be read is an exception, a missing cascade one at the next
 * detection.
 * Threads: one at a time among initDetector, findQORFaces and processImage. */
QOROCV460_API int initDetector(void);

/* Finds faces with the Haar cascade and reports box, nose bridge and chin of each. Where they were
 * fitted, draws boxes and light-blue landmarks for a host that wants to see or keep the picture.
 *   results  out, QOROCV460_FACE_RESULTS doubles: face records
 * Returns what a detection returns.
 * Threads: one at a time among initDetector, findQORFaces and processImage. */
QOROCV460_API int findQORFaces(const char* imagePath, const char* outputPath, double* results,
                               int* resultCount, int maxSide, bool show, int* width, int* height);

/* Finds faces with the Haar cascade and reports box and all 68 landmarks of each. Where they were
 * fitted, draws boxes and light-blue landmarks for a host that wants to see or keep the picture.
 *   results  out, QOROCV460_LANDMARK_RESULTS doubles: landmark records
 * Returns what a detection returns.
 * Threads: one at a time among initDetector, findQORFaces and processImage. */
QOROCV460_API int processImage(const char* imagePath, const char* outputPath, double* results,
                               int* resultCount, int maxSide, bool show, int* width, int* height);

/* Shows a photograph at its own size in the "Display window" and waits for a key.
 * Returns 0 when it was shown; QOROCV460_UNREADABLE where it cannot be read, after the line "Could
 * not open or find the image" on standard output and with both outputs untouched.
 * Threads: the caller's must be one that may own a window. */
QOROCV460_API int showImage(const char* imagePath, int* width, int* height);

/* ---- Several threads: nine slots -------------------------------------------------------------
 *
 * The functions below keep their detectors in nine slots. A slot loads what a call needs when it
 * first needs it and keeps it. One thread at a time may use a slot; calls on different slots share
 * no detector and may run side by side, also with one on the shared pair. */

/* Finds faces with the Haar cascade and reports box, nose bridge and chin of each.
 *   results  out, QOROCV460_FACE_RESULTS doubles: face records
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesInTread01(const char* imagePath, double* results, int* resultCount,
                                        int slot, int maxSide, int* width, int* height);

/* Finds faces with the Haar cascade and reports box, nose bridge and chin of each. Where they were
 * fitted, draws boxes and light-blue landmarks for a host that wants to see or keep the picture.
 *   results  out, QOROCV460_FACE_RESULTS doubles: face records
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesInTreadDebug(const char* imagePath, const char* outputPath,
                                           double* results, int* resultCount, int slot, int maxSide,
                                           bool show, int* width, int* height);

/* Finds faces with the Haar cascade and reports box, nose bridge, chin and centre of the head,
 * whose top it estimates by the colours above the face.
 *   results  out, QOROCV460_HEAD_CENTRE_RESULTS doubles: head centre records
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesHAARInTread_TR02(const char* imagePath, double* results,
                                               int* resultCount, int slot, int maxSide,
                                               void* reserved, int* width, int* height);

/* Finds faces with the SSD network and reports box, nose bridge and chin of each.
 *   results  out, QOROCV460_FACE_RESULTS doubles: face records
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesDUNInTread01(const char* imagePath, double* results, int* resultCount,
                                           int modelKind, int slot, int maxSide, int* width,
                                           int* height);

/* Finds faces with the SSD network and reports box, nose bridge and chin of each. Draws the boxes,
 * and red landmarks where they were fitted, for a host that wants to see or keep the picture.
 *   results      out, QOROCV460_FACE_RESULTS doubles: face records
 *   resultCount  in and out as always, but set only after the window and the copy
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesDUNInTread01Debug(const char* imagePath, const char* outputPath,
                                                bool show, double* results, int* resultCount,
                                                int modelKind, int slot, int maxSide, int* width,
                                                int* height);

/* Finds faces with the SSD network and reports their boxes, without landmarks: fast, and the
 * landmark model is not needed.
 *   results  out, QOROCV460_FACE_RESULTS doubles: the number of boxes at [0], and face records with
 *            the middle of the box and the middle of its bottom edge in place of the landmarks
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesDUNInTread02(const char* imagePath, double* results, int* resultCount,
                                           int modelKind, int slot, int maxSide, int* width,
                                           int* height);

/* Finds faces with the SSD network and reports box, nose bridge, chin and centre of the head,
 * whose top it estimates by the colours above the face.
 *   results  out, QOROCV460_HEAD_CENTRE_RESULTS doubles: head centre records
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesDUNInTread_TR02(const char* imagePath, double* results,
                                              int* resultCount, int modelKind, int slot,
                                              int maxSide, void* reserved, int* width, int* height);

/* ---- Person masks, on a slot -----------------------------------------------------------------
 *
 * The functions below also tell the person from the background, and hand out pixels for display:
 * blocks of four bytes a pixel, row after row from the top, without header or padding.
 *
 *   viewPixels      out, QOROCV460_VIEW_BYTES: the photograph stretched to 1000 x 1000 pixels; red,
 *                   green, blue, alpha (255)
 *   maskPixels      out, QOROCV460_MASK_BYTES: the photograph's person mask, stretched to 192 x 192
 *                   pixels; blue, green, red and alpha are 255 for a person, 0, 0, 0 and 255 for
 *                   the background
 *   cropMaskPixels  out, QOROCV460_MASK_BYTES: the person mask of the surroundings of an only face,
 *                   three times its box in each direction as far as the photograph goes, stretched
 *                   as maskPixels is. Untouched where the box does not lie in the photograph, or is
 *                   empty
 *   cropBox         out, QOROCV460_CROP_BOX doubles: left, top, width and height of those
 *                   surroundings, fractions; all 0.0 where the box does not lie in the photograph,
 *                   or is empty
 *
 * viewPixels and maskPixels are written for every photograph that can be read, with faces or
 * without; cropMaskPixels and cropBox stay untouched unless exactly one face was found. */

/* Finds faces with the SSD network and reports box, nose bridge, chin and centre of the head,
 * whose top it reads from the photograph's person mask.
 *   results  out, QOROCV460_HEAD_CENTRE_RESULTS doubles: head centre records
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesDUNInTreadWithMask01(const char* imagePath, double* results,
                                                   int* resultCount, int modelKind, int slot,
                                                   int maxSide, intptr_t reserved, int* width,
                                                   int* height, unsigned char* viewPixels,
                                                   unsigned char* maskPixels);

/* Finds faces with the SSD network and reports box, nose bridge, chin and centre of the head,
 * whose top it reads from the photograph's person mask, or from the closer one of an only face.
 *   results  out, QOROCV460_HEAD_CENTRE_RESULTS doubles: head centre records
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesDUNInTreadWithMask02(const char* imagePath, double* results,
                                                   int* resultCount, int modelKind, int slot,
                                                   int maxSide, intptr_t reserved, int* width,
                                                   int* height, unsigned char* viewPixels,
                                                   unsigned char* maskPixels,
                                                   unsigned char* cropMaskPixels, double* cropBox);

/* Finds faces with the Haar cascade and reports box, nose bridge, chin and centre of the head,
 * whose top it reads from the photograph's person mask, or from the closer one of an only face.
 *   results    out, QOROCV460_HEAD_CENTRE_RESULTS doubles: head centre records
 *   modelKind  in: never read
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
QOROCV460_API int findQORFacesHAARInTreadWithMask02(const char* imagePath, double* results,
                                                    int* resultCount, int modelKind, int slot,
                                                    int maxSide, int reserved, int* width,
                                                    int* height, unsigned char* viewPixels,
                                                    unsigned char* maskPixels,
                                                    unsigned char* cropMaskPixels, double* cropBox);

/* ---- Tiles of a group photograph, on a slot -------------------------------------------------- */

/* Finds faces with the SSD network in one tile of a photograph in which they are too small to be
 * found when all of it is looked at, and reports box, nose bridge, chin and centre of the head,
 * whose top it estimates by the colours above the face. The host lays a grid over the photograph
 * and calls once for each cell; tiles are one and a half cells wide and high, so that neighbours
 * overlap by half a cell. A face may be found in several tiles; telling so is the host's.
 *   results     out, QOROCV460_HEAD_CENTRE_RESULTS doubles: head centre records, all values
 *               fractions of the tile's width and height
 *   tileCol     in: the cell's column, from 1
 *   gridCols    in: the columns of the grid, at least 1
 *   tileRow     in: the cell's row, from 1
 *   gridRows    in: the rows of the grid, at least 1
 *   tileWidth   out: columns of the tile, in pixels of the photograph
 *   tileHeight  out: rows of the tile
 *   tileLeft    out: the tile's first column
 *   tileTop     out: the tile's first row
 *   maxSide     in: length in pixels that the longer side of the tile is scaled to before
 *               detection; below 1 its own
 * A cell beyond the grid's end gives the grid's last tile. Counts of 0, and other cells without a
 * tile in the photograph, leave as cv::Exception.
 * Returns what a detection returns.
 * Threads: one at a time per slot. */
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
