// first_program MODELS PHOTO...: the box of every face in photographs, in pixels.
#include <cstdio>
#include <qorocv460/client.h>

namespace client = qorocv::client;

int main(int argc, char** argv) {
  if (argc < 3 || client::placeModels(argv[1]) != 0) {
    std::puts("first_program MODELS PHOTO..., with a directory that holds all seven models");
    return 2;
  }
  int bad = 0;
  for (int i = 2; i < argc; ++i) {
    const client::Result<client::Photo> photo = client::analyse(argv[i], {}, QOROCV460_FIRST_SLOT);
    if (!photo) {
      std::printf("%s: %s\n", argv[i], photo.error().text.c_str());
      bad = 1;
      continue;
    }
    std::printf("%s: %d found\n", argv[i], photo->found);
    for (const client::Face& face : photo->faces) {
      const client::Pixel leftTop = photo->inPixels(face.box.leftTop);
      const client::Pixel rightBottom = photo->inPixels(face.box.rightBottom);
      std::printf("from %.0f, %.0f to %.0f, %.0f\n", leftTop.x, leftTop.y, rightBottom.x,
                  rightBottom.y);
    }
  }
  return bad;
}
