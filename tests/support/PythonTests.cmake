# Adds every test method of Python files as a test of its own, so that each is counted, and runs beside the others:
#   quillmark_add_python_tests(LABEL label [IN_PRIVATE_ROOT] FILES file... [ENVIRONMENT name=value...])
# IN_PRIVATE_ROOT runs each in a private root of its own that holds the built bundle. A test that can't be made on the
# machine ends with status 77 and counts as skipped.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(quillmark_add_python_tests)
  cmake_parse_arguments(arg "IN_PRIVATE_ROOT" "LABEL" "FILES;ENVIRONMENT" ${ARGN})
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME folder)
  foreach(file IN LISTS arg_FILES)
    if(arg_IN_PRIVATE_ROOT)
      set(command ${PROJECT_SOURCE_DIR}/tests/support/in-privroot
        env PYTHONPATH=/run/scripts/support python3 -B /run/scripts/${folder}/${file})
    else()
      set(command ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(STRINGS ${file} lines REGEX "^class |^    def test_")
    foreach(line IN LISTS lines)
      if(line MATCHES "^class ([A-Za-z0-9_]+)")
        set(class ${CMAKE_MATCH_1})
      elseif(line MATCHES "def test_([A-Za-z0-9_]+)")
        set(name ${arg_LABEL}.${class}.${CMAKE_MATCH_1})
        add_test(NAME ${name} COMMAND ${command} ${class}.test_${CMAKE_MATCH_1})
        set_tests_properties(${name} PROPERTIES
          LABELS ${arg_LABEL}
          TIMEOUT 120
          SKIP_RETURN_CODE 77
          ENVIRONMENT "QUILLMARK_APP=${QUILLMARK_APP};${arg_ENVIRONMENT}")
      endif()
    endforeach()
  endforeach()
endfunction()
