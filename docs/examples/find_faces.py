# find_faces.py LIBRARY MODELS/ PHOTO: the box of every face in a photograph, in pixels.
import ctypes
import sys

QOROCV460_UNREADABLE = -1
QOROCV460_FIRST_SLOT = 1
QOROCV460_CAFFE = 1
QOROCV460_FACE_RECORD = 8
QOROCV460_FACE_RESULTS = 241

library = ctypes.CDLL(sys.argv[1])
library.findQORFacesDUNInTread01.argtypes = [
    ctypes.c_char_p, ctypes.POINTER(ctypes.c_double), ctypes.POINTER(ctypes.c_int),
    ctypes.c_int, ctypes.c_int, ctypes.c_int, ctypes.POINTER(ctypes.c_int),
    ctypes.POINTER(ctypes.c_int)]

if library.initModelsAtPath(sys.argv[2].encode()) != 0:
    sys.exit("a model is missing")
results = (ctypes.c_double * QOROCV460_FACE_RESULTS)()
count, width, height = ctypes.c_int(QOROCV460_FACE_RESULTS), ctypes.c_int(), ctypes.c_int()
found = library.findQORFacesDUNInTread01(sys.argv[3].encode(), results, count, QOROCV460_CAFFE,
                                         QOROCV460_FIRST_SLOT, 0, width, height)
if found == QOROCV460_UNREADABLE:
    sys.exit("not a photograph")
for at in range(1, count.value, QOROCV460_FACE_RECORD):
    left, top, right, bottom = results[at:at + 4]
    print("from %.0f, %.0f to %.0f, %.0f" % (left * width.value, top * height.value,
                                             right * width.value, bottom * height.value))
