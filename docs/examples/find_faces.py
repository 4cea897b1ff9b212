# find_faces.py LIBRARY MODELS/ PHOTO: the box of every face in a photograph, in pixels.
import ctypes
import sys

library = ctypes.CDLL(sys.argv[1])
library.findQORFacesDUNInTread01.argtypes = [
    ctypes.c_char_p, ctypes.POINTER(ctypes.c_double), ctypes.POINTER(ctypes.c_int),
    ctypes.c_int, ctypes.c_int, ctypes.c_int, ctypes.POINTER(ctypes.c_int),
    ctypes.POINTER(ctypes.c_int)]

if library.initModelsAtPath(sys.argv[2].encode()) != 0:
    sys.exit("a model is missing")
results = (ctypes.c_double * 241)()
count, width, height = ctypes.c_int(241), ctypes.c_int(), ctypes.c_int()
found = library.findQORFacesDUNInTread01(sys.argv[3].encode(), results, count, 1, 1, 0, width, height)
if found < 0:
    sys.exit("not a photograph")
for at in range(1, count.value, 8):
    left, top, right, bottom = results[at:at + 4]
    print("from %.0f, %.0f to %.0f, %.0f" % (left * width.value, top * height.value,
                                             right * width.value, bottom * height.value))
