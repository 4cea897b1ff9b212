/* Hosts are compiled with these numbers in them, and other languages repeat them: they stay. Prints
 * them, too. */
#include "qorocv460/safe.h"

#include <stdio.h>

static int failures = 0;

static void expectValue(const char* name, int value, int expected) {
  printf("%s = %d\n", name, value);
  if (value != expected) {
    printf("failed: %s is %d, not %d\n", name, value, expected);
    ++failures;
  }
}

#define EXPECT_VALUE(name, expected) expectValue(#name, name, expected)

int main(void) {
  EXPECT_VALUE(QOROCV460_UNREADABLE, -1);
  EXPECT_VALUE(QOROCV460_REJECTED, 0);
  EXPECT_VALUE(QOROCV460_FIRST_SLOT, 1);
  EXPECT_VALUE(QOROCV460_LAST_SLOT, 9);
  EXPECT_VALUE(QOROCV460_CAFFE, 1);
  EXPECT_VALUE(QOROCV460_TENSORFLOW, 2);
  EXPECT_VALUE(QOROCV460_LANDMARKS, 68);
  EXPECT_VALUE(QOROCV460_CHIN, 8);
  EXPECT_VALUE(QOROCV460_NOSE_BRIDGE, 27);

  EXPECT_VALUE(QOROCV460_MAX_RECORDS, 30);
  EXPECT_VALUE(QOROCV460_TEST_VALUES, 68);
  EXPECT_VALUE(QOROCV460_FACE_RECORD, 8);
  EXPECT_VALUE(QOROCV460_FACE_RESULTS, 241);
  EXPECT_VALUE(QOROCV460_HEAD_CENTRE_RECORD, 10);
  EXPECT_VALUE(QOROCV460_HEAD_CENTRE_RESULTS, 301);
  EXPECT_VALUE(QOROCV460_LANDMARK_RECORD, 140);
  EXPECT_VALUE(QOROCV460_LANDMARK_RESULTS, 4201);
  EXPECT_VALUE(QOROCV460_VIEW_SIDE, 1000);
  EXPECT_VALUE(QOROCV460_VIEW_BYTES, 4000000);
  EXPECT_VALUE(QOROCV460_MASK_SIDE, 192);
  EXPECT_VALUE(QOROCV460_MASK_BYTES, 147456);
  EXPECT_VALUE(QOROCV460_CROP_BOX, 4);

  EXPECT_VALUE(QOROCV460_FAILED, -2);

  return failures == 0 ? 0 : 1;
}
