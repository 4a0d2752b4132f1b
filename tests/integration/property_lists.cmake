# Our property lists beside those of other programs.

add_executable(property_list_probe property_list_probe.cpp)
target_link_libraries(property_list_probe PRIVATE quillmark_core quillmark_compile)

quillmark_add_python_tests(LABEL integration
  FILES property_lists_agree_test.py
  ENVIRONMENT "QUILLMARK_PROPERTY_LIST_PROBE=$<TARGET_FILE:property_list_probe>;QUILLMARK_SANITIZE=${QUILLMARK_SANITIZE}")
