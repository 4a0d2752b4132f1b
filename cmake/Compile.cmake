# How every target of the project is compiled. Warnings are errors where CMAKE_COMPILE_WARNING_AS_ERROR says so, as the
# developers' presets do: a newer compiler's new warning must not keep anybody from building a release.

add_library(quillmark_compile INTERFACE)
target_compile_options(quillmark_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  -ffunction-sections -fdata-sections) # so that a program is linked with what it needs of the core alone

# Whoever finds a mistake in memory has to get past these. The last one only exists on some processors.
set(quillmark_hardening -fstack-protector-strong -fstack-clash-protection)
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection QUILLMARK_HAS_CF_PROTECTION)
if(QUILLMARK_HAS_CF_PROTECTION)
  list(APPEND quillmark_hardening -fcf-protection)
endif()
add_compile_options(${quillmark_hardening})
add_compile_definitions(_GLIBCXX_ASSERTIONS)
include(CheckPIESupported)
check_pie_supported()
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text)
set(CMAKE_SKIP_RPATH ON)

# Debug information in release builds stays off: the bundle is what the user downloads. The checks of the C library's
# functions need the optimiser, and the sanitizers have their own.
foreach(language C CXX)
  set(CMAKE_${language}_FLAGS_RELEASE "-O2 -DNDEBUG -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
endforeach()
add_link_options(-Wl,--as-needed -Wl,-O1)

if(QUILLMARK_SANITIZE)
  # A report needs functions and lines. With the checks for undefined behaviour the optimiser takes most of a build's time,
  # and warns of what is no fault; fuzzers need their speed, and races the least disturbance.
  set(level -O1)
  if(QUILLMARK_SANITIZE STREQUAL "address,undefined")
    set(level -O0)
  endif()
  add_compile_options(-fsanitize=${QUILLMARK_SANITIZE} -fno-omit-frame-pointer ${level} -g1)
  add_link_options(-fsanitize=${QUILLMARK_SANITIZE})
  if(QUILLMARK_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

# Programs that people start bring the C++ library along: a start is 0.4 ms shorter without a library to look for, to map
# and to bind, and a program with root's rights depends on one less. The sanitizers bring libraries of their own.
add_library(quillmark_program INTERFACE)
target_link_libraries(quillmark_program INTERFACE quillmark_compile)
if(NOT QUILLMARK_SANITIZE)
  target_link_options(quillmark_program INTERFACE -static-libstdc++ -static-libgcc -Wl,--gc-sections)
endif()

if(QUILLMARK_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()
