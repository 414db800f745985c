/* A host in plain C11: sets up a context, converts a value, and drops the context. With
   OWN_ALLOCATOR it brings the allocator that every record of the library must then come from. */
#include <comnlib.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef OWN_ALLOCATOR
static long calls = 0;
static long live = 0;

static void* counted(void* block) {
  ++calls;
  if (block != NULL) ++live;
  return block;
}

void* comn_malloc(size_t size) {
  return counted(malloc(size));
}

void* comn_calloc(size_t count, size_t size) {
  return counted(calloc(count, size));
}

void* comn_realloc(void* block, size_t size) {
  if (block != NULL) --live;
  return counted(realloc(block, size));
}

void comn_free(void* block) {
  if (block != NULL) --live;
  free(block);
}
#endif

static int failures = 0;

static void expect(int condition, const char* what) {
  if (condition) return;
  fprintf(stderr, "host: expected: %s\n", what);
  ++failures;
}

static void convert_number(CS_CONTEXT* context) {
  const CS_DATAFMT from = {.datatype = CS_INT_TYPE};
  const CS_DATAFMT to = {.datatype = CS_CHAR_TYPE, .maxlength = 16, .format = CS_DFMT_NULLTERM};
  const CS_INT number = -40000;
  CS_CHAR text[16] = "";
  CS_INT length = 0;
  const CS_CONV_FUNC convert = com_conv_func(context, from.datatype, to.datatype);
  expect(convert != NULL, "a conversion from int to char");
  if (convert == NULL) return;
  expect(convert(context, &from, &number, &to, text, &length) == CS_SUCCEED, "CS_SUCCEED");
  expect(strcmp(text, "-40000") == 0 && length == 7, "\"-40000\" and its NUL");
}

int main(void) {
  CS_CONTEXT context = {0};
  expect(strstr(com_version(), "comnlib/") != NULL, "a version line");
  expect(com_conv_init(&context) == CS_SUCCEED, "a conversion matrix");
  expect(com_null_init(&context) == CS_SUCCEED, "null values");
  convert_number(&context);
#ifdef OWN_ALLOCATOR
  expect(live >= 28, "the matrix, the null table and its 26 values from this host's allocator");
#endif
  com_null_free(&context);
  com_conv_free(&context);
#ifdef OWN_ALLOCATOR
  expect(calls > 0 && live == 0, "every block back in this host's allocator");
#endif
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
