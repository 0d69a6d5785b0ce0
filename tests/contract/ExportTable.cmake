# What the DLL must export and may import: the checked-in names, the number of functions in the public header, and the names
# in the README.

set(public_header ${PROJECT_SOURCE_DIR}/exports/Kestrovane.h)
file(STRINGS ${public_header} declarations REGEX "^KESTROVANE_API ")
list(LENGTH declarations declared_functions)
set(exports_file ${CMAKE_CURRENT_LIST_DIR}/exports.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports_file} ${public_header})
file(STRINGS ${exports_file} exported_names)
list(TRANSFORM exported_names REPLACE "(.+)" "    \"\\1\",")
list(JOIN exported_names "\n" exported_names)
set(readme ${PROJECT_SOURCE_DIR}/README.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${readme})
file(READ ${readme} readme_text)
string(REGEX MATCH "\n## Exported functions\n.*\n## What was verified where" readme_text "${readme_text}")
string(REGEX MATCHALL "`[A-Za-z0-9]+`(,| \\|)" readme_functions "${readme_text}")
list(TRANSFORM readme_functions REPLACE "^`([A-Za-z0-9]+)`.*" "    \"\\1\",")
list(JOIN readme_functions "\n" readme_functions)
set(imports_file ${CMAKE_CURRENT_LIST_DIR}/imports.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${imports_file})
file(STRINGS ${imports_file} imports ENCODING UTF-8)
list(TRANSFORM imports REPLACE "^([^ ]+) — (.+)$" "    {\"\\1\", \"\\2\"},")
list(JOIN imports "\n" imports)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/tests/contract/ImportedNames.h CONTENT
"// Generated from tests/contract/imports.txt.

#pragma once

struct ListedImport {
    const char* name; // library!function
    const char* user; // who calls it
};

constexpr ListedImport kListedImports[] = {
@imports@
};
" @ONLY)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/tests/contract/ExportedNames.h CONTENT
"// Generated from tests/contract/exports.txt and the public header.

#pragma once

#include <cstddef>

constexpr std::size_t kDeclaredFunctions = @declared_functions@; // in the public header

constexpr const char* kExportedNames[] = {
@exported_names@
};

constexpr const char* kReadmeFunctions[] = {
@readme_functions@
};
" @ONLY)

# The header's text. A string literal of a compiler has its limits, so it is joined from one per group.
file(READ ${public_header} header_text)
string(REPLACE "\n/// @defgroup" ")header\" R\"header(\n/// @defgroup" header_text "${header_text}")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/tests/contract/PublicHeader.h CONTENT
"// Generated from the public header.

#pragma once

constexpr const char* kPublicHeader = R\"header(@header_text@)header\";
" @ONLY)
