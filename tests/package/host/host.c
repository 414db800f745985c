/* A host in plain C11: sets up a context, converts a value, and drops the context. With
   OWN_ALLOCATOR it brings the allocator that every record of the library must then come from. */
#undef NDEBUG
#include <assert.h>
#include <comnlib.h>
#include <stdlib.h>
#include <string.h>

#ifdef OWN_ALLOCATOR
static long live = 0;

static void* counted(void* block) {
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

int main(void) {
  CS_CONTEXT context = {0};
  const CS_DATAFMT from = {.datatype = CS_INT_TYPE};
  const CS_DATAFMT to = {.datatype = CS_CHAR_TYPE, .maxlength = 16, .format = CS_DFMT_NULLTERM};
  const CS_INT number = -40000;
  CS_CHAR text[16] = "";
  CS_INT length = 0;
  assert(strstr(com_version(), "comnlib/") != NULL);
  assert(com_conv_init(&context) == CS_SUCCEED);
  assert(com_null_init(&context) == CS_SUCCEED);
  const CS_CONV_FUNC convert = com_conv_func(&context, from.datatype, to.datatype);
  assert(convert != NULL);
  assert(convert(&context, &from, &number, &to, text, &length) == CS_SUCCEED);
  assert(strcmp(text, "-40000") == 0);
  assert(length == 7); /* with the NUL */
#ifdef OWN_ALLOCATOR
  assert(live >= 28); /* the matrix, the null table and its 26 values */
#endif
  com_null_free(&context);
  com_conv_free(&context);
#ifdef OWN_ALLOCATOR
  assert(live == 0);
#endif
  return 0;
}
