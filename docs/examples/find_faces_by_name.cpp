// find_faces_by_name QOROCV460.DLL MODELS/ PHOTO: a host that loads the library while it runs.
#include <cstdio>
#include <qorocv460/qorocv460.h>
#include <windows.h>

template <typename Function> Function* find(HMODULE library, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

int main(int argc, char** argv) {
  const HMODULE library = argc == 4 ? LoadLibraryA(argv[1]) : nullptr;
  if (library == nullptr) {
    return 1;
  }
  const auto placeModels = find<decltype(initModelsAtPath)>(library, "initModelsAtPath");
  const auto findFaces =
      find<decltype(findQORFacesDUNInTread01)>(library, "findQORFacesDUNInTread01");
  double results[QOROCV460_FACE_RESULTS];
  int count = QOROCV460_FACE_RESULTS, width = 0, height = 0;
  if (placeModels(argv[2]) != 0 ||
      findFaces(argv[3], results, &count, QOROCV460_CAFFE, QOROCV460_FIRST_SLOT, 0, &width,
                &height) == QOROCV460_UNREADABLE) {
    return 1;
  }
  for (int at = 1; at < count; at += QOROCV460_FACE_RECORD) {
    std::printf("from %.0f, %.0f to %.0f, %.0f\n", results[at] * width, results[at + 1] * height,
                results[at + 2] * width, results[at + 3] * height);
  }
  return FreeLibrary(library) ? 0 : 1;
}
