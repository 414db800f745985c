// The store of a configuration: sections by name, entries by section and name, the last entry of a
// name counting. Nothing is ever taken out, so numbers of sections stay good.
#pragma once

#include <string_view>

#include "config/comcfg.h"

extern "C" {

// The section of that name, new or known already.
CS_RETCODE cfg__add_section(CfgParseInfo* parse, const CS_CHAR* name, CS_INT length);

// Ends the current section: entries need a new one from here.
CS_VOID cfg__check_section(CfgParseInfo* parse);

// An entry of the current section.
CS_RETCODE cfg__add_entry(CfgParseInfo* parse, const CS_CHAR* name, CS_INT name_length,
                          const CS_CHAR* value, CS_INT value_length);

// Parses an included file in place. Reports what is wrong with the inclusion.
CS_RETCODE cfg__add_include(CfgParseInfo* parse, const CS_CHAR* path, CS_INT length);
}
