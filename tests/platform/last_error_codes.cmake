# Writes the table of all codes that last_error.h names.
set(header ${PROJECT_SOURCE_DIR}/include/korutil/platform/last_error.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
file(STRINGS ${header} lines REGEX "^inline constexpr DWORD ERROR_")
list(TRANSFORM lines REPLACE "^inline constexpr DWORD (ERROR_[A-Z_]+) = .*" "    {\"\\1\", \\1},\n")
list(JOIN lines "" rows)
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/last_error_codes.h CONTENT
"#pragma once
// Made from last_error.h.
#include \"korutil/platform/last_error.h\"

inline constexpr struct {
    const char* name;
    DWORD code;
} kLastErrorCodes[] = {
@rows@};
" @ONLY)
