# The vendor's key pair: a throw-away one for each build folder. The public half is compiled into the update tool; the
# private half signs what the build makes, and never leaves the build folder.
set(vendor_key_folder ${CMAKE_BINARY_DIR}/vendor-key)
set(vendor_private_key ${vendor_key_folder}/private.pem)
if(NOT EXISTS ${vendor_private_key})
  file(MAKE_DIRECTORY ${vendor_key_folder})
  file(CHMOD ${vendor_key_folder} DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  execute_process(COMMAND ${OPENSSL} genrsa -out ${vendor_private_key} 2048 ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
endif()
execute_process(COMMAND ${OPENSSL} rsa -in ${vendor_private_key} -pubout
  OUTPUT_VARIABLE VENDOR_PUBLIC_KEY ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
configure_file(VendorKey.h.in ${vendor_key_folder}/include/VendorKey.h @ONLY)
file(WRITE ${vendor_key_folder}/public.pem "${VENDOR_PUBLIC_KEY}")

# Signs FILE, made by a rule or a target, into SIGNATURE whenever it changes. The signature belongs to TARGET, a custom
# target of the calling CMakeLists.txt.
function(quillmark_sign TARGET FILE SIGNATURE)
  add_custom_command(
    OUTPUT ${SIGNATURE}
    COMMAND ${OPENSSL} dgst -sha1 -sign ${vendor_private_key} -out ${SIGNATURE} ${FILE}
    DEPENDS ${FILE} ${ARGN} ${vendor_private_key}
    VERBATIM)
  set_property(TARGET ${TARGET} APPEND PROPERTY SOURCES ${SIGNATURE})
endfunction()

# A helper tool among the bundle's resources, with its signature.
function(quillmark_tool TARGET)
  target_include_directories(${TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/companions ${PROJECT_SOURCE_DIR}/src)
  target_compile_definitions(${TARGET} PRIVATE QUILLMARK_TOOL_VERSION="${QUILLMARK_TOOL_VERSION}")
  set_target_properties(${TARGET} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${QUILLMARK_APP_RESOURCES})
  add_custom_target(${TARGET}_signature ALL)
  quillmark_sign(${TARGET}_signature ${QUILLMARK_APP_RESOURCES}/${TARGET} ${QUILLMARK_APP_RESOURCES}/${TARGET}.sig ${TARGET})
endfunction()
