/* check_models MODELS/: names the models that cannot be opened. */
#include <locale.h>
#include <qorocv460/qorocv460.h>
#include <stdio.h>

int main(int argc, char** argv) {
  int missing;
  if (argc != 2) {
    return 2;
  }
  setlocale(LC_ALL, ""); /* the directory may be named in any language */
  missing = initModelsAtPath(argv[1]);
  for (int model = 1, digits = missing; digits != 0; ++model, digits /= 10) {
    if (digits % 10 != 0) {
      printf("model %02d is missing\n", model);
    }
  }
  return missing == 0 ? 0 : 1;
}
