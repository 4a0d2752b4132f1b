# Libraries from elsewhere; docs/dependencies.md says why each is here.

find_package(Qt6 6.4 REQUIRED COMPONENTS Core UiTools Widgets)
find_package(fmt REQUIRED)
find_package(pugixml REQUIRED)
find_package(CLI11 REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
find_package(ZLIB REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)
pkg_check_modules(SECRET REQUIRED IMPORTED_TARGET libsecret-1)
pkg_check_modules(ARCHIVE REQUIRED IMPORTED_TARGET libarchive)
pkg_check_modules(MINIZIP REQUIRED IMPORTED_TARGET minizip)
find_path(STB_INCLUDE_DIR stb_image.h PATH_SUFFIXES stb REQUIRED)

# Qt Core alone. The include folder that Qt's own target hands out also holds the window libraries' headers; this one
# holds nothing but QtCore, so that including a window header in the core does not compile.
get_target_property(qt_core_include_dirs Qt6::Core INTERFACE_INCLUDE_DIRECTORIES)
foreach(dir IN LISTS qt_core_include_dirs)
  if(dir MATCHES "/QtCore$")
    set(qt_core_headers ${dir})
  endif()
endforeach()
set(qt_core_only ${CMAKE_BINARY_DIR}/qt-core-only)
file(MAKE_DIRECTORY ${qt_core_only})
file(CREATE_LINK ${qt_core_headers} ${qt_core_only}/QtCore SYMBOLIC)

add_library(quillmark_qt_core INTERFACE)
target_include_directories(quillmark_qt_core SYSTEM INTERFACE ${qt_core_only} ${qt_core_only}/QtCore)
target_compile_definitions(quillmark_qt_core INTERFACE QT_CORE_LIB $<$<CONFIG:Release>:QT_NO_DEBUG>)
target_link_libraries(quillmark_qt_core INTERFACE $<LINK_ONLY:Qt6::Core>)
