# The application bundle is laid out as on macOS, on every system.

set(QUILLMARK_APP ${CMAKE_BINARY_DIR}/Quillmark.app)
set(QUILLMARK_APP_RESOURCES ${QUILLMARK_APP}/Contents/Resources)

# Puts the program TARGET into the bundle APP (a full path) as its executable.
function(quillmark_bundle_executable TARGET APP)
  set_target_properties(${TARGET} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${APP}/Contents/MacOS)
endfunction()

# Copies SOURCE (a file, beside the calling CMakeLists.txt) to DESTINATION whenever it changes; the copies belong to TARGET.
function(quillmark_bundle_file TARGET SOURCE DESTINATION)
  get_filename_component(folder ${DESTINATION} DIRECTORY)
  add_custom_command(
    OUTPUT ${DESTINATION}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/${SOURCE} ${DESTINATION}
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${SOURCE}
    VERBATIM)
  set_property(TARGET ${TARGET} APPEND PROPERTY SOURCES ${DESTINATION})
endfunction()
