// client_host MODELS PHOTO: a host of the installed package, in C++ over the client.
#include <cstdio>
#include <qorocv460/client.h>

int main(int argc, char** argv) {
  namespace client = qorocv::client;
  if (argc != 3 || client::placeModels(argv[1]) != 0) {
    return 1;
  }
  const client::Result<client::Photo> photo = client::analyse(argv[2], {}, QOROCV460_LAST_SLOT);
  if (!photo) {
    std::printf("%s\n", photo.error().text.c_str());
    return 1;
  }
  std::printf("QOROCV460 %s found %d\n", QOROCV460_VERSION, photo->found);
  return 0;
}
