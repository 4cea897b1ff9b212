# many_machines.py SCHEDULER PHOTO...: the faces of photographs, found by the workers of a Dask scheduler.
import sys

import distributed

import qorocv460.dask

with distributed.Client(sys.argv[1]) as client:
    faces = qorocv460.dask.find_faces(sys.argv[2:], client, landmarks=False)
    counts = faces.groupby("photo")["face"].max().compute() + 1
    print(counts.to_string())
