/* QOROCV460Safe: the nineteen functions of qorocv460.h for hosts that cannot catch C++ exceptions.
 *
 * Each is the function of that header whose name follows the prefix, with the same arguments and
 * results; read there what it does. It belongs to a second library, QOROCV460Safe, which calls
 * QOROCV460 and needs it beside it. What is different:
 *
 *   Failure    Where an exception would leave the function, it returns QOROCV460_FAILED, and
 *              qorocv460_lastError tells why. No exception leaves any function here. Outputs may
 *              then be written in part.
 *   Numbers    The calling thread's floating-point traps are masked during a call, and the thread's
 *              floating-point environment is as before afterwards: nothing is for the host to mask.
 *   Threads    The same rules, and one that breaks them is told so: a call on a slot, or on the
 *              shared pair, in which another thread is at work returns QOROCV460_FAILED at once,
 *              with nothing touched. So does one that places models during a detection. What calls
 *              the nineteen themselves, beside this library, is not seen.
 *   Models     qorocv460_initModelsAtPath adds a slash where its directory ends in none, and reads
 *              it in the user's locale, to which it switches the process as a photograph does.
 *              qorocv460_initModelNames returns QOROCV460_FAILED where its report cannot be
 *              created: the process goes on, and the models are where they were.
 */
#ifndef QOROCV460_SAFE_H
#define QOROCV460_SAFE_H

#include "qorocv460/qorocv460.h"

#if defined(_WIN32) && defined(QOROCV460_SAFE_BUILDING)
#define QOROCV460_SAFE_API __declspec(dllexport)
#elif defined(_WIN32)
#define QOROCV460_SAFE_API __declspec(dllimport)
#else
#define QOROCV460_SAFE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What a function returns where an exception would have left it. */
enum { QOROCV460_FAILED = -2 };

/* ---- What the nineteen do not tell ----------------------------------------------------------- */

/* Returns the version of the library, such as "0.1.0": static text.
 * Threads: any. */
QOROCV460_SAFE_API const char* qorocv460_version(void);

/* Tells why the calling thread's last call that returned QOROCV460_FAILED failed.
 * Returns text of at most 1023 bytes, which holds until the thread's next failure; empty where none
 * has failed. Paths in it are in the encoding that files are opened in.
 * Threads: any; each has a text of its own. */
QOROCV460_SAFE_API const char* qorocv460_lastError(void);

/* Names the models that a result of qorocv460_initModelsAtPath says cannot be opened.
 *   code  in: that result
 * Returns short names, each with the public one in brackets, separated by commas, such as
 * "model06.xml (haarcascade_frontalface_alt.xml)"; empty where none is missing, and for negative
 * codes. The text holds until the thread's next call of this function.
 * Threads: any; each has a text of its own. */
QOROCV460_SAFE_API const char* qorocv460_missingModels(int code);

/* ---- Bindings ------------------------------------------------------------------------------- */

QOROCV460_SAFE_API int qorocv460_findFaces(void);

QOROCV460_SAFE_API int qorocv460_testPass(double* values, int* count);

/* ---- Models --------------------------------------------------------------------------------- */

QOROCV460_SAFE_API int qorocv460_initModelsAtPath(const char* directory);

QOROCV460_SAFE_API int qorocv460_initModelNames(void);

/* ---- One thread: the shared pair of a cascade and a landmark fitter -------------------------- */

QOROCV460_SAFE_API int qorocv460_initDetector(void);

QOROCV460_SAFE_API int qorocv460_findQORFaces(const char* imagePath, const char* outputPath,
                                              double* results, int* resultCount, int maxSide,
                                              bool show, int* width, int* height);

QOROCV460_SAFE_API int qorocv460_processImage(const char* imagePath, const char* outputPath,
                                              double* results, int* resultCount, int maxSide,
                                              bool show, int* width, int* height);

QOROCV460_SAFE_API int qorocv460_showImage(const char* imagePath, int* width, int* height);

/* ---- Several threads: nine slots ------------------------------------------------------------- */

QOROCV460_SAFE_API int qorocv460_findQORFacesInTread01(const char* imagePath, double* results,
                                                       int* resultCount, int slot, int maxSide,
                                                       int* width, int* height);

QOROCV460_SAFE_API int qorocv460_findQORFacesInTreadDebug(const char* imagePath,
                                                          const char* outputPath, double* results,
                                                          int* resultCount, int slot, int maxSide,
                                                          bool show, int* width, int* height);

QOROCV460_SAFE_API int qorocv460_findQORFacesHAARInTread_TR02(const char* imagePath,
                                                              double* results, int* resultCount,
                                                              int slot, int maxSide, void* reserved,
                                                              int* width, int* height);

QOROCV460_SAFE_API int qorocv460_findQORFacesDUNInTread01(const char* imagePath, double* results,
                                                          int* resultCount, int modelKind, int slot,
                                                          int maxSide, int* width, int* height);

QOROCV460_SAFE_API int qorocv460_findQORFacesDUNInTread01Debug(const char* imagePath,
                                                               const char* outputPath, bool show,
                                                               double* results, int* resultCount,
                                                               int modelKind, int slot, int maxSide,
                                                               int* width, int* height);

QOROCV460_SAFE_API int qorocv460_findQORFacesDUNInTread02(const char* imagePath, double* results,
                                                          int* resultCount, int modelKind, int slot,
                                                          int maxSide, int* width, int* height);

QOROCV460_SAFE_API int qorocv460_findQORFacesDUNInTread_TR02(const char* imagePath, double* results,
                                                             int* resultCount, int modelKind,
                                                             int slot, int maxSide, void* reserved,
                                                             int* width, int* height);

/* ---- Person masks, on a slot ----------------------------------------------------------------- */

QOROCV460_SAFE_API int
qorocv460_findQORFacesDUNInTreadWithMask01(const char* imagePath, double* results, int* resultCount,
                                           int modelKind, int slot, int maxSide, intptr_t reserved,
                                           int* width, int* height, unsigned char* viewPixels,
                                           unsigned char* maskPixels);

QOROCV460_SAFE_API int qorocv460_findQORFacesDUNInTreadWithMask02(
    const char* imagePath, double* results, int* resultCount, int modelKind, int slot, int maxSide,
    intptr_t reserved, int* width, int* height, unsigned char* viewPixels,
    unsigned char* maskPixels, unsigned char* cropMaskPixels, double* cropBox);

QOROCV460_SAFE_API int qorocv460_findQORFacesHAARInTreadWithMask02(
    const char* imagePath, double* results, int* resultCount, int modelKind, int slot, int maxSide,
    int reserved, int* width, int* height, unsigned char* viewPixels, unsigned char* maskPixels,
    unsigned char* cropMaskPixels, double* cropBox);

/* ---- Tiles of a group photograph, on a slot -------------------------------------------------- */

QOROCV460_SAFE_API int qorocv460_findQORMulitFacesDUNInTread_TR02(
    const char* imagePath, double* results, int* resultCount, int tileCol, int gridCols,
    int tileRow, int gridRows, int* tileWidth, int* tileHeight, int* tileLeft, int* tileTop,
    int modelKind, int slot, int maxSide, intptr_t reserved, int* width, int* height);

#ifdef __cplusplus
}
#endif

#endif /* QOROCV460_SAFE_H */
