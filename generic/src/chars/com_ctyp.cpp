// The older classification of single bytes: one look-up in one fixed table.
#include "chars/iso_1.h"

CS_INT com_toupper(CS_BYTE byte) {
  return Com_charmap[byte].char_upper;
}

CS_INT com_tolower(CS_BYTE byte) {
  return Com_charmap[byte].char_lower;
}

// The masked bits are the result, not 0 or 1: callers combine them.
#define COMNLIB_OLDER_CLASS(routine, mask)       \
  CS_INT routine(CS_BYTE byte) {                 \
    return Com_charmap[byte].char_type & (mask); \
  }

COMNLIB_OLDER_CLASS(com_isalpha, COMN_CT_ALPHA)
COMNLIB_OLDER_CLASS(com_isupper, COMN_CT_UPPER)
COMNLIB_OLDER_CLASS(com_islower, COMN_CT_LOWER)
COMNLIB_OLDER_CLASS(com_isdigit, COMN_CT_DIGIT)
COMNLIB_OLDER_CLASS(com_isxdigit, COMN_CT_XDIGIT)
COMNLIB_OLDER_CLASS(com_isspace, COMN_CT_SPACE)
COMNLIB_OLDER_CLASS(com_isgraph, COMN_CT_GRAPH)
#undef COMNLIB_OLDER_CLASS
