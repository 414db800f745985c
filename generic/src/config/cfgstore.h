// The store of a configuration: sections by name, entries by section and name, both in the order in
// which their names first appear; of several entries of one name the last counts. Nothing is ever
// removed, so the number of a section stays valid.
#pragma once

#include <string_view>

#include "config/comcfg.h"

extern "C" {

// Makes the section of that name, which may be new, the current one.
CS_RETCODE cfg__add_section(CfgParseInfo* parse, const CS_CHAR* name, CS_INT length);

// Ends the current section. Until the next section begins, entries belong to the section of the
// empty name.
CS_VOID cfg__check_section(CfgParseInfo* parse);

// An entry of the current section.
CS_RETCODE cfg__add_entry(CfgParseInfo* parse, const CS_CHAR* name, CS_INT name_length,
                          const CS_CHAR* value, CS_INT value_length);

// Parses an included file in place; its first entries belong to the current section. Without a
// store it checks only the syntax of the path. Errors of the inclusion are reported.
CS_RETCODE cfg__add_include(CfgParseInfo* parse, const CS_CHAR* path, CS_INT length);
}
