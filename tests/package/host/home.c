/* Prints where the library finds its localization home, and whether it is one. */
#include <comnlib.h>
#include <stdio.h>

int main(void) {
  CS_CONTEXT context = {0};
  CS_CHAR path[1025] = "";
  const CS_RETCODE found =
      com_path_anyfile(&context, path, sizeof path, "locales/locales.dat", CS_NULLTERM);
  FILE* table = found == CS_SUCCEED ? fopen(path, "r") : NULL;
  printf("%s\n", path);
  return table == NULL || fclose(table) != 0;
}
