# first_program.py PHOTO...: the box and the chin of every face, in pixels.
import io
import sys

import qorocv460

if isinstance(sys.stdout, io.TextIOWrapper):
    sys.stdout.reconfigure(errors="backslashreplace")  # names of files need not be text
for photo in qorocv460.find_many(sys.argv[1:], on_error="return"):
    if isinstance(photo, qorocv460.PhotoError):
        print(photo)
        continue
    for face in photo.faces:
        left, top, right, bottom = face.box
        print(f"{photo.name}: from {left:.0f}, {top:.0f} to {right:.0f}, {bottom:.0f}, chin at {face.chin}")
