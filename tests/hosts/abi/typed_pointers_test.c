/* A host in C: every function assigned to a pointer of the type that hosts declare, and called. */
#include "qorocv460/qorocv460.h"

#include <stdio.h>
#include <string.h>

typedef int (*NoArguments)(void);
typedef int (*TestPass)(double*, int*);
typedef int (*InitModelsAtPath)(const char*);
typedef int (*SingleImage)(const char*, const char*, double*, int*, int, bool, int*, int*);
typedef int (*ShowImage)(const char*, int*, int*);
typedef int (*Haar)(const char*, double*, int*, int, int, int*, int*);
typedef int (*HaarDebug)(const char*, const char*, double*, int*, int, int, bool, int*, int*);
typedef int (*HaarHeadCentre)(const char*, double*, int*, int, int, void*, int*, int*);
typedef int (*Net)(const char*, double*, int*, int, int, int, int*, int*);
typedef int (*NetDebug)(const char*, const char*, bool, double*, int*, int, int, int, int*, int*);
typedef int (*NetHeadCentre)(const char*, double*, int*, int, int, int, void*, int*, int*);
typedef int (*NetMask01)(const char*, double*, int*, int, int, int, intptr_t, int*, int*,
                         unsigned char*, unsigned char*);
typedef int (*NetMask02)(const char*, double*, int*, int, int, int, intptr_t, int*, int*,
                         unsigned char*, unsigned char*, unsigned char*, double*);
typedef int (*HaarMask02)(const char*, double*, int*, int, int, int, int, int*, int*,
                          unsigned char*, unsigned char*, unsigned char*, double*);
typedef int (*NetTile)(const char*, double*, int*, int, int, int, int, int*, int*, int*, int*, int,
                       int, int, intptr_t, int*, int*);

static int failures = 0;

static void expect(int condition, const char* what) {
  if (!condition) {
    printf("failed: %s\n", what);
    ++failures;
  }
}

int main(void) {
  const NoArguments find_faces = findFaces;
  const NoArguments init_model_names = initModelNames;
  const NoArguments init_detector = initDetector;
  const TestPass test_pass = testPass;
  const InitModelsAtPath init_models_at_path = initModelsAtPath;
  const SingleImage find_qor_faces = findQORFaces;
  const SingleImage process_image = processImage;
  const ShowImage show_image = showImage;
  const Haar haar = findQORFacesInTread01;
  const HaarDebug haar_debug = findQORFacesInTreadDebug;
  const HaarHeadCentre haar_head_centre = findQORFacesHAARInTread_TR02;
  const Net net = findQORFacesDUNInTread01;
  const NetDebug net_debug = findQORFacesDUNInTread01Debug;
  const Net net_alone = findQORFacesDUNInTread02;
  const NetHeadCentre net_head_centre = findQORFacesDUNInTread_TR02;
  const NetMask01 net_mask_01 = findQORFacesDUNInTreadWithMask01;
  const NetMask02 net_mask_02 = findQORFacesDUNInTreadWithMask02;
  const HaarMask02 haar_mask_02 = findQORFacesHAARInTreadWithMask02;
  const NetTile net_tile = findQORMulitFacesDUNInTread_TR02;

  double values[QOROCV460_TEST_VALUES];
  int count = 0;
  int width = 0;
  int height = 0;

  expect(find_faces() == 0, "findFaces returns 0");
  expect(test_pass(values, &count) == 68 && count == 68, "testPass returns 68");
  expect(values[67] == 67.67, "testPass fills the last value");
  expect(init_models_at_path("no/such/directory/") == 1111111, "initModelsAtPath finds no model");
  expect(find_qor_faces("p", NULL, NULL, &count, 0, false, &width, &height) == 0,
         "findQORFaces rejects null results");
  expect(process_image("p", NULL, values, NULL, 0, false, &width, &height) == 0,
         "processImage rejects a null count");
  expect(show_image("no-such-picture.png", &width, &height) == -1, "showImage cannot read");
  expect(haar("p", NULL, &count, 1, 0, &width, &height) == 0, "findQORFacesInTread01 rejects");
  expect(haar_debug("p", NULL, NULL, &count, 1, 0, false, &width, &height) == 0,
         "findQORFacesInTreadDebug rejects");
  expect(haar_head_centre("p", NULL, &count, 1, 0, NULL, &width, &height) == 0,
         "findQORFacesHAARInTread_TR02 rejects");
  expect(net("p", NULL, &count, 1, 1, 0, &width, &height) == 0, "findQORFacesDUNInTread01 rejects");
  expect(net_debug("p", NULL, false, NULL, &count, 1, 1, 0, &width, &height) == 0,
         "findQORFacesDUNInTread01Debug rejects");
  expect(net_alone("p", NULL, &count, 1, 1, 0, &width, &height) == 0,
         "findQORFacesDUNInTread02 rejects");
  expect(net_head_centre("p", NULL, &count, 1, 1, 0, NULL, &width, &height) == 0,
         "findQORFacesDUNInTread_TR02 rejects");
  expect(net_mask_01("p", NULL, &count, 1, 1, 0, 0, &width, &height, NULL, NULL) == 0,
         "findQORFacesDUNInTreadWithMask01 rejects");
  expect(net_mask_02("p", NULL, &count, 1, 1, 0, 0, &width, &height, NULL, NULL, NULL, NULL) == 0,
         "findQORFacesDUNInTreadWithMask02 rejects");
  expect(haar_mask_02("p", NULL, &count, 1, 1, 0, 0, &width, &height, NULL, NULL, NULL, NULL) == 0,
         "findQORFacesHAARInTreadWithMask02 rejects");
  expect(net_tile("p", NULL, &count, 1, 1, 1, 1, NULL, NULL, NULL, NULL, 1, 1, 0, 0, &width,
                  &height) == 0,
         "findQORMulitFacesDUNInTread_TR02 rejects");
  /* These two need files of the host's: calling them is for other tests. */
  expect(init_model_names != NULL && init_detector != NULL, "initialisers are there");

  printf("%d failed\n", failures);
  return failures == 0 ? 0 : 1;
}
