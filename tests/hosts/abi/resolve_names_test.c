/* A host that binds by name: resolve_names_test LIBRARY EXPORTS.TXT */
#include <stdio.h>
#include <string.h>

#ifdef _WIN32
#include <windows.h>

typedef HMODULE Library;

static Library openLibrary(const char* path) {
  return LoadLibraryA(path);
}
static int isExported(Library library, const char* name) {
  return GetProcAddress(library, name) != NULL;
}
static int closeLibrary(Library library) {
  return FreeLibrary(library);
}
#else
#include <dlfcn.h>

typedef void* Library;

static Library openLibrary(const char* path) {
  return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}
static int isExported(Library library, const char* name) {
  return dlsym(library, name) != NULL;
}
static int closeLibrary(Library library) {
  return dlclose(library) == 0;
}
#endif

int main(int argc, char** argv) {
  char name[256];
  int resolved = 0;
  Library library = argc == 3 ? openLibrary(argv[1]) : NULL;
  FILE* names = argc == 3 ? fopen(argv[2], "r") : NULL;
  if (library == NULL || names == NULL) {
    printf("cannot open %s\n", library == NULL ? "the library" : "the names");
    return 1;
  }
  while (fgets(name, sizeof name, names) != NULL) {
    name[strcspn(name, "\r\n")] = '\0';
    if (!isExported(library, name)) {
      printf("not exported: %s\n", name);
      return 1;
    }
    ++resolved;
  }
  fclose(names);
  printf("%d names resolved\n", resolved);
  return closeLibrary(library) && resolved > 0 ? 0 : 1;
}
