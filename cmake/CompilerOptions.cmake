# What every target of this project is compiled with.
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# A processor fault may throw from any instruction (fault translation), so tables must cover every instruction.
add_compile_options(-fnon-call-exceptions -fasynchronous-unwind-tables -fno-strict-aliasing)
if(WIN32)
  # SSE arithmetic gives the same doubles as 64-bit Linux; callers of a DLL may bring a stack aligned to 4 only.
  add_compile_options(-msse2 -mfpmath=sse -mstackrealign)
  # The system's headers describe variadic macros and anonymous structs that -Wpedantic objects to.
  add_compile_options(-Wno-pedantic -Wno-attributes)
  add_compile_definitions(WINVER=0x0501 _WIN32_WINNT=0x0501 _WIN32_IE=0x0600)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 takes its own inlined std::string for overlapping copies.
  add_compile_options(-Wno-restrict)
endif()
if(KORUTIL_SANITIZE)
  # With the sanitizers' checks in between the compiler loses sight of what was initialised.
  add_compile_options(-Wno-maybe-uninitialized -Wno-stringop-overflow)
  add_compile_options(-fsanitize=${KORUTIL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=${KORUTIL_SANITIZE})
endif()
