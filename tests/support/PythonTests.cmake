# Adds every test method of Python files as a test of its own, so that each is counted, and runs beside the others:
#   quillmark_add_python_tests(LABEL label [IN_PRIVATE_ROOT [SIDE_BY_SIDE]] FILES file... [ENVIRONMENT name=value...])
# IN_PRIVATE_ROOT runs each in a private root of its own that holds the built bundle. SIDE_BY_SIDE is for tests that mostly
# wait for something's own pauses: those of a class are one test, and run all at once. A test that can't be made on the
# machine ends with status 77 and counts as skipped.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(quillmark_add_python_tests)
  cmake_parse_arguments(arg "IN_PRIVATE_ROOT;SIDE_BY_SIDE" "LABEL" "FILES;ENVIRONMENT" ${ARGN})
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME folder)
  foreach(file IN LISTS arg_FILES)
    if(arg_IN_PRIVATE_ROOT)
      set(command ${PROJECT_SOURCE_DIR}/tests/support/in-privroot
        env PYTHONPATH=/run/project/tests/${folder}:/run/project/tests/support python3 -B -m unittest)
    else()
      set(command ${CMAKE_COMMAND} -E env PYTHONPATH=${CMAKE_CURRENT_SOURCE_DIR}:${PROJECT_SOURCE_DIR}/tests/support
        ${Python3_EXECUTABLE} -B -m unittest)
    endif()
    cmake_path(GET file STEM module)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(STRINGS ${file} lines REGEX "^class |^    def test_")
    set(classes)
    foreach(line IN LISTS lines)
      if(line MATCHES "^class ([A-Za-z0-9_]+)")
        set(class ${CMAKE_MATCH_1})
        list(APPEND classes ${class})
        set(tests_of_${class})
      elseif(line MATCHES "def test_([A-Za-z0-9_]+)")
        list(APPEND tests_of_${class} ${CMAKE_MATCH_1})
      endif()
    endforeach()
    foreach(class IN LISTS classes)
      set(names ${tests_of_${class}})
      if(arg_SIDE_BY_SIDE AND names) # a class without tests helps those that have some
        list(TRANSFORM names PREPEND ${module}.${class}.test_)
        quillmark_add_python_test(${arg_LABEL}.${class}
          ${PROJECT_SOURCE_DIR}/tests/support/side-by-side ${names} -- ${command})
      else()
        foreach(name IN LISTS names)
          quillmark_add_python_test(${arg_LABEL}.${class}.${name} ${command} ${module}.${class}.test_${name})
        endforeach()
      endif()
    endforeach()
  endforeach()
endfunction()

# A part of the function above, whose arguments it sees.
macro(quillmark_add_python_test test)
  add_test(NAME ${test} COMMAND ${ARGN})
  set_tests_properties(${test} PROPERTIES
    LABELS ${arg_LABEL}
    TIMEOUT 120
    SKIP_RETURN_CODE 77
    ENVIRONMENT "QUILLMARK_APP=${QUILLMARK_APP};QUILLMARK_PICTURES=${PROJECT_SOURCE_DIR}/build/e2e;${arg_ENVIRONMENT}")
endmacro()
