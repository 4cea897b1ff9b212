/* A host that binds by name: resolve_names_test LIBRARY EXPORTS.TXT */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
  char name[256];
  int resolved = 0;
  void* library = argc == 3 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  FILE* names = argc == 3 ? fopen(argv[2], "r") : NULL;
  if (library == NULL || names == NULL) {
    printf("cannot open %s\n", library == NULL ? "the library" : "the names");
    return 1;
  }
  while (fgets(name, sizeof name, names) != NULL) {
    name[strcspn(name, "\n")] = '\0';
    if (dlsym(library, name) == NULL) {
      printf("not exported: %s\n", name);
      return 1;
    }
    ++resolved;
  }
  fclose(names);
  printf("%d names resolved\n", resolved);
  return dlclose(library) == 0 && resolved > 0 ? 0 : 1;
}
