/* Looks an entry of a configuration file up: example_config FILE SECTION ENTRY. */
#include <stdio.h>
#include <stdlib.h>

#include <comnlib/config.h>

int main(int argc, char** argv) {
  CS_CONTEXT context = {0};
  CS_INT length;
  char* value;

  if (argc != 4) return 2;
  /* What is wrong with a file is reported with its line; a null path names the home's nuv.cfg. */
  if (comn_init_cfg(&context, argv[1]) != CS_SUCCEED) return 1;

  /* The first call gives the length, or 0 when there is no such entry. */
  comn_get_cfg(&context, argv[2], argv[3], NULL, 0, &length);
  value = malloc((size_t)length + 1);
  if (value != NULL &&
      comn_get_cfg(&context, argv[2], argv[3], value, length + 1, &length) == CS_SUCCEED)
    printf("%s\n", value);
  free(value);
  comn_drop_cfg(&context);
  return 0;
}
