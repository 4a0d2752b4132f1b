# How every target of the project is compiled.

add_library(quillmark_compile INTERFACE)
target_compile_options(quillmark_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_compile_definitions(quillmark_compile INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)

# Debug information in release builds stays off: the bundle is what the user downloads.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
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
