/* Counts the words of a text in a hash table and prints them in the order of a queue. */
#include <stdio.h>
#include <string.h>

#include <comnlib/list.h>

enum { kMaxWords = 64, kTableSize = 101 };

static CS_RETCODE print_word(CS_VOID* data) {
  printf("%s\n", (const char*)data);
  return CS_SUCCEED;
}

int main(void) {
  static char text[] = "the list keeps the pointers and never copies the keys";
  static int counts[kMaxWords];
  int words = 0;
  CS_INT table_size = kTableSize;
  LM_CONTEXT* context;
  LM_HANDLE* table;
  LM_HANDLE* order;

  if (lm_initlm(LM_MIN_VERSION, "words", CS_NULLTERM, &context) != CS_SUCCEED) return 1;
  lm_property(context, CS_SET, LM_CTX_MAX_TABLESIZE, &table_size, sizeof table_size, NULL);
  if (lm_list_alloc(context, LM_CHASH, "counts", CS_NULLTERM, &table) != CS_SUCCEED ||
      lm_list_alloc(context, LM_QUEUE, "order", CS_NULLTERM, &order) != CS_SUCCEED) {
    lm_exit(context);
    return 1;
  }

  for (char* word = strtok(text, " "); word != NULL; word = strtok(NULL, " ")) {
    const CS_INT length = (CS_INT)strlen(word);
    CS_VOID* found;
    if (lm_list_op(table, LM_OP_FIND, word, length, &found, NULL) == CS_SUCCEED) {
      ++*(int*)found;
      continue;
    }
    counts[words] = 1;
    lm_list_op(table, LM_OP_INSERT, word, length, &counts[words++], NULL);
    lm_list_op(order, LM_OP_INSERT, NULL, CS_UNUSED, word, NULL);
  }

  lm_list_op(order, LM_OP_PRINT_DATA, NULL, CS_UNUSED, (CS_VOID*)print_word, NULL);
  CS_VOID* the;
  if (lm_list_op(table, LM_OP_FIND, "the", 3, &the, NULL) == CS_SUCCEED)
    printf("the: %d times\n", *(int*)the);
  lm_exit(context); /* drops both lists */
  return 0;
}
