/* A host that keeps the rows of a result in a memory pool: names in an alloc-only subpool that goes
   at once, row records in a uniform one. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "comnlib.h"

static CS_VOID* take_chunk(CS_CONTEXT* context, CS_INT size) {
  (void)context;
  return malloc((size_t)size);
}

static CS_VOID give_chunk(CS_CONTEXT* context, CS_VOID* chunk) {
  (void)context;
  free(chunk);
}

typedef struct Row {
  struct Row* next;
  char* name;
} Row;

/* A subpool of `pool` with the given discipline; null when there is no memory. */
static MmHandle* subpool(MmHandle* pool, CS_INT tag, CS_INT discipline) {
  MmHandle* made = NULL;
  if (comn_mmproperty(pool, CS_GET, MM_PROP_SUBPOOL, &made, tag, NULL) != CS_SUCCEED) return NULL;
  comn_mmproperty(made, CS_SET, MM_PROP_POOLTYPE, &discipline, CS_UNUSED, NULL);
  return made;
}

int main(void) {
  static const char* const names[] = {"ada", "grace", "edsger"};
  CS_THREAD threads = *comn_thread_table();
  CS_CONTEXT context = {0};
  MmHandle* pool = NULL;
  Row* rows = NULL;

  context.ctxversion = 113;
  context.ctxthread = &threads; /* the pool makes a mutex and may be used from any thread */
  context.ctxmalloc = take_chunk;
  context.ctxfree = give_chunk;
  if (comn_mminit(&context, &pool) != CS_SUCCEED) return 1;

  MmHandle* texts = subpool(pool, 1, MM_POOL_ALLOCONLY);
  MmHandle* records = subpool(pool, 2, MM_POOL_UNIFORM);
  if (texts == NULL || records == NULL) return 1;
  for (size_t i = 0; i < sizeof names / sizeof names[0]; ++i) {
    CS_VOID* record = NULL;
    CS_VOID* text = NULL;
    const size_t size = strlen(names[i]) + 1;
    if (comn_mmalloc(records, sizeof(Row), &record) != CS_SUCCEED) return 1;
    if (comn_mmalloc(texts, (CS_INT)size, &text) != CS_SUCCEED) return 1;
    Row* row = record;
    row->name = memcpy(text, names[i], size);
    row->next = rows;
    rows = row;
  }
  for (const Row* row = rows; row != NULL; row = row->next) puts(row->name);

  comn_mmfree(records, rows); /* a single record */
  comn_mmdrop(texts, CS_UNUSED);
  return comn_mmdrop(pool, MM_FORCE_DROP) == CS_SUCCEED ? 0 : 1;
}
