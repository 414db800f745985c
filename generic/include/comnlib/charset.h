/**
 * @file
 * Character attributes: the tables that describe a character set, and the routines that read them:
 * character classes, case, byte length and display width, lexical class, ASCII form.
 *
 * Everything here only reads its tables; all calls may run in any number of threads at once.
 * A null `const char_attrib*` means the built-in ISO 8859-1 attributes; any other null pointer
 * stops the process. `ch` points at the first byte of a character. If that byte begins a two-byte
 * character the next byte is read too: make sure that one readable byte follows the text.
 */
#ifndef COMNLIB_CHARSET_H
#define COMNLIB_CHARSET_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Bits of char_map.char_type. */
enum {
  COMN_CT_UPPER = 1,
  COMN_CT_LOWER = 2,
  COMN_CT_ALPHA = COMN_CT_UPPER | COMN_CT_LOWER,
  COMN_CT_DIGIT = 4,
  COMN_CT_SPACE = 8,
  COMN_CT_XDIGIT = 16,
  COMN_CT_PUNCT = 32,
  COMN_CT_GRAPH = 64,
  COMN_CT_LEAD = 128 /**< begins a two-byte character; char_upper numbers the second byte's table */
};

/** Bits of char_map.char_lex. */
enum {
  COMN_LEX_LETTER = 1,
  COMN_LEX_DIGIT = 2,
  COMN_LEX_SPACE = 8,     /**< white space and controls */
  COMN_LEX_CURRENCY = 16, /**< not in the built-in attributes */
  COMN_LEX_PUNCT = 32
};

/** cs_class of char_attrib. */
enum { COMN_CS_SINGLEBYTE = 1, COMN_CS_MULTIBYTE = 2 };

/** Kinds of image that com_build_char_attrib reads. */
enum { COM_IMAGE_SINGLEBYTE = 1001, COM_IMAGE_MULTIBYTE = 1002 };

/** Sizes of the tables, in bytes. */
enum {
  COMN_CS_NAMELEN = 30,
  COMN_CS_MAPSIZE = 256,      /**< a width, normalisation or sound-alike table */
  COMN_CS_TYPEMAPSIZE = 1024, /**< a type table: 256 char_map entries */
  COMN_CS_IMAGE1_TYPES = 1028,
  COMN_CS_IMAGE1_SOUNDEX = 257,
  COMN_CS_IMAGE1_SIZE = COMN_CS_IMAGE1_TYPES + COMN_CS_IMAGE1_SOUNDEX,
  COMN_CS_IMAGE2_HEADER = 44,
  COMN_CS_IMAGE2_MINSIZE = COMN_CS_IMAGE2_HEADER + COMN_CS_TYPEMAPSIZE + COMN_CS_MAPSIZE
};

/**
 * The entry of one byte in a type table. In a single-byte set the byte is a character; else it is
 * a first byte (type table 0) or a second byte (the table that the first byte names).
 */
typedef struct char_map {
  CS_BYTE char_upper; /**< upper-case form; of a lead byte, the number of the second byte's table */
  CS_BYTE char_lower; /**< lower-case form */
  CS_BYTE char_lex;   /**< COMN_LEX_ bits */
  CS_BYTE char_type;  /**< COMN_CT_ bits */
} char_map;

/** A character set. */
typedef struct char_attrib {
  CS_USHORT cs_status;              /**< the host's; not read here */
  CS_BYTE cs_class;                 /**< COMN_CS_SINGLEBYTE or COMN_CS_MULTIBYTE */
  CS_BYTE cs_id;                    /**< the host's; not read here */
  CS_USHORT cs_namelen;             /**< bytes of the name, at most 30 */
  CS_CHAR cs_name[COMN_CS_NAMELEN]; /**< ends in a NUL only when it is shorter */
  CS_BYTE cs_maxcharlen;            /**< bytes of the longest character */
  CS_BYTE cs_ncharsize;             /**< number of distinct character lengths */
  CS_BYTE cs_nnorm;                 /**< number of normalisation tables */
  CS_BYTE cs_ntype;                 /**< number of type tables */
  CS_BYTE cs_nsoundex;              /**< number of sound-alike tables */
  CS_BYTE spare[3];                 /**< not used */
  const CS_BYTE*
      cs_width_map;           /**< low 4 bits length, high 4 bits columns; by first byte; or null */
  const CS_BYTE* cs_norm_map; /**< cs_nnorm tables of 256 bytes, or null */
  const char_map* cs_type_map; /**< cs_ntype tables of 256 entries */
  const CS_BYTE* cs_soundex;   /**< cs_nsoundex tables of 256 bytes */
} char_attrib;

/** A zero-filled record from comn_malloc, null on failure. */
COMN_API char_attrib* com_alloc_char_attrib(CS_VOID);

/** Frees the record but not its maps, which belong to whoever made them. CS_SUCCEED. */
COMN_API CS_RETCODE com_free_char_attrib(char_attrib* attrib);

/**
 * Fills `attrib` from the image of a character set that the caller holds.
 *
 * - COM_IMAGE_SINGLEBYTE: 257 char_map entries, then 257 bytes of sound-alike codes.
 * - COM_IMAGE_MULTIBYTE: a header of 44 bytes, then the maps at the offsets that it gives; class
 *   and status come from the header. The image is not checked.
 *
 * `name` is NUL-terminated; its first 30 characters are kept. The maps point into the image, which
 * must outlive the attributes. CS_SUCCEED; CS_FAIL for a null image or attrib or another kind.
 */
COMN_API CS_RETCODE com_build_char_attrib(CS_INT kind, CS_INT id, const CS_CHAR* name,
                                          const CS_BYTE* image, char_attrib* attrib);

/** The built-in ISO 8859-1 attributes. Static storage. */
COMN_API const char_attrib* com_get_charattrib(CS_VOID);

/**
 * The type map of the built-in attributes, 256 entries. No entry has the graphic bit or
 * COMN_LEX_CURRENCY: only the routines that read money know that "$" and the bytes 0xA2 to 0xA5 are
 * currency signs. Static storage.
 */
COMN_API const char_map* com_get_typemap(CS_VOID);

/**
 * comn_isalpha and the others of its kind: not zero when the character has the class. A byte whose
 * type has COMN_CT_LEAD counts as the first of two, whatever follows it.
 */
/**@{*/
COMN_API CS_INT comn_isalpha(const char_attrib* attrib, const CS_BYTE* ch);
COMN_API CS_INT comn_isupper(const char_attrib* attrib, const CS_BYTE* ch);
COMN_API CS_INT comn_islower(const char_attrib* attrib, const CS_BYTE* ch);
COMN_API CS_INT comn_isdigit(const char_attrib* attrib, const CS_BYTE* ch);
COMN_API CS_INT comn_isxdigit(const char_attrib* attrib, const CS_BYTE* ch);
COMN_API CS_INT comn_isspace(const char_attrib* attrib, const CS_BYTE* ch);
COMN_API CS_INT comn_ispunct(const char_attrib* attrib, const CS_BYTE* ch);
COMN_API CS_INT comn_isgraph(const char_attrib* attrib, const CS_BYTE* ch);
/**@}*/

/** The lexical class (COMN_LEX_ bits). */
COMN_API CS_INT comn_get_lex(const char_attrib* attrib, const CS_BYTE* ch);

/**
 * comn_toupper, comn_tolower: write the converted character, of the same length, to `dst`. A
 * character whose table entry is 0 has no other case and is copied whole. A two-byte character
 * keeps its first byte, and its second byte becomes what the table says, 0 included. `dst` may be
 * `ch`.
 */
/**@{*/
COMN_API CS_VOID comn_toupper(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst);
COMN_API CS_VOID comn_tolower(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst);
/**@}*/

/**
 * Bytes of the character: what the width map says of its first byte, which may be 0; 1 without a
 * map.
 */
COMN_API CS_INT comn_char_width(const char_attrib* attrib, const CS_BYTE* ch);

/** Advances `*ch` by the bytes of the character, at least 1. */
COMN_API CS_VOID comn_inc_char(const char_attrib* attrib, CS_BYTE** ch);

/**
 * Columns that the character takes on a screen, as the width map says of its first byte: a mark
 * that takes no column counts as much as the letters that begin with the same byte.
 */
COMN_API CS_INT comn_disp_width(const char_attrib* attrib, const CS_BYTE* ch);

/** The width map of 256 bytes, null when every character is one byte and one column. */
COMN_API const CS_BYTE* comn_get_widthmap(const char_attrib* attrib);

/**
 * Where the last whole character of the text from `start` up to `end` ends. `whole_len`: bytes of
 * whole characters; `partial_len`: bytes of a cut character before `end`; `excess`: bytes of it
 * that are missing; `count`: number of whole characters.
 * Only bytes before `end` are read. An end before the start, or further from it than a CS_INT can
 * say, stops the process.
 */
COMN_API CS_VOID comn_whole_char(const char_attrib* attrib, const CS_BYTE* start,
                                 const CS_BYTE* end, CS_INT* whole_len, CS_INT* partial_len,
                                 CS_INT* excess, CS_INT* count);

/**
 * The ASCII form of a character, 0 when it has none. Null attributes give the byte itself;
 * attributes without normalisation tables give char_lower of the first byte.
 */
COMN_API CS_INT comn_to_ascii(const char_attrib* attrib, const CS_BYTE* ch);

/**
 * The ASCII forms of the characters in the `srclen` bytes at `src`, one byte each, as far as
 * `dstlen` bytes have room. A character without an ASCII form becomes a NUL byte; a cut last
 * character is left out. Returns the number of bytes written. Negative lengths stop the process.
 * `dst` may be `src`.
 */
COMN_API CS_INT comn_str_to_ascii(const char_attrib* attrib, const CS_BYTE* src, CS_INT srclen,
                                  CS_BYTE* dst, CS_INT dstlen);

/** @name The older classification of single bytes
 * Over one fixed ISO 8859-1 table in which every printable byte is graphic, the blank included. */
/**@{*/
/**
 * com_toupper, com_tolower: the byte in that case. com_isalpha and so on return the class bits that
 * the byte has, 0 or more: com_isgraph(' ') is 64.
 */
COMN_API CS_INT com_toupper(CS_BYTE byte);
COMN_API CS_INT com_tolower(CS_BYTE byte);
COMN_API CS_INT com_isalpha(CS_BYTE byte);
COMN_API CS_INT com_isupper(CS_BYTE byte);
COMN_API CS_INT com_islower(CS_BYTE byte);
COMN_API CS_INT com_isdigit(CS_BYTE byte);
COMN_API CS_INT com_isxdigit(CS_BYTE byte);
COMN_API CS_INT com_isspace(CS_BYTE byte);
COMN_API CS_INT com_isgraph(CS_BYTE byte);
/**@}*/

COMN_STATIC_ASSERT(sizeof(char_map) == 4);
COMN_STATIC_ASSERT(sizeof(char_attrib) == COMN_BY_HOST(60, 80));
COMN_STATIC_ASSERT(offsetof(char_attrib, cs_class) == 2);
COMN_STATIC_ASSERT(offsetof(char_attrib, cs_namelen) == 4);
COMN_STATIC_ASSERT(offsetof(char_attrib, cs_name) == 6);
COMN_STATIC_ASSERT(offsetof(char_attrib, cs_maxcharlen) == 36);
COMN_STATIC_ASSERT(offsetof(char_attrib, cs_nsoundex) == 40);
COMN_STATIC_ASSERT(offsetof(char_attrib, cs_width_map) == COMN_BY_HOST(44, 48));
COMN_STATIC_ASSERT(offsetof(char_attrib, cs_soundex) == COMN_BY_HOST(56, 72));

#ifdef __cplusplus
}
#endif

#endif
