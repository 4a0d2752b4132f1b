# The application bundle is laid out as on macOS, on every system.

set(QUILLMARK_APP ${CMAKE_BINARY_DIR}/Quillmark.app)
set(QUILLMARK_APP_RESOURCES ${QUILLMARK_APP}/Contents/Resources)

# Puts the program TARGET into the bundle APP (a full path) as its executable.
function(quillmark_bundle_executable TARGET APP)
  set_target_properties(${TARGET} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${APP}/Contents/MacOS)
endfunction()

# Copies SOURCE (beside the calling CMakeLists.txt, or a full path) to DESTINATION whenever it changes. The copies belong
# to TARGET, a custom target of the calling CMakeLists.txt.
function(quillmark_bundle_file TARGET SOURCE DESTINATION)
  cmake_path(ABSOLUTE_PATH SOURCE BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  cmake_path(GET DESTINATION PARENT_PATH folder)
  add_custom_command(
    OUTPUT ${DESTINATION}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${CMAKE_COMMAND} -E copy ${SOURCE} ${DESTINATION}
    DEPENDS ${SOURCE}
    VERBATIM)
  set_property(TARGET ${TARGET} APPEND PROPERTY SOURCES ${DESTINATION})
endfunction()
