# How every target of the project is compiled. Warnings are errors where CMAKE_COMPILE_WARNING_AS_ERROR says so, as the
# developers' presets do: a newer compiler's new warning must not keep anybody from building a release.

add_library(quillmark_compile INTERFACE)
target_compile_options(quillmark_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
target_compile_definitions(quillmark_compile INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)

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
  add_compile_options(-fsanitize=${QUILLMARK_SANITIZE} -fno-omit-frame-pointer -O1)
  add_link_options(-fsanitize=${QUILLMARK_SANITIZE})
  if(QUILLMARK_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

if(QUILLMARK_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()
