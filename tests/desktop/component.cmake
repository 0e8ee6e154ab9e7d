partkeep_test(c_interface_test SOURCES c_interface_test.cpp LINK ORVICPartkeepRead partkeep_test_support)
add_dependencies(c_interface_test partkeep-library)
target_compile_definitions(c_interface_test PRIVATE "PARTKEEP_LIBRARY_TOOL=\"$<TARGET_FILE:partkeep-library>\"")

partkeep_test(host_application_test
  SOURCES host_application_test.cpp
  LINK ORVICPartkeepRead partkeep_test_support Qt6::Widgets Qt6::Test)

set(sanitizer_flags "")
if(PARTKEEP_SANITIZE)
  set(sanitizer_flags "-fsanitize=address,undefined")
endif()
add_test(NAME installed_consumer COMMAND ${CMAKE_COMMAND}
  "-DBUILD=${CMAKE_BINARY_DIR}" "-DSOURCE=${CMAKE_CURRENT_SOURCE_DIR}/consumer" "-DFLAGS=${sanitizer_flags}"
  "-DPLACE=${CMAKE_CURRENT_BINARY_DIR}/consumer" -P "${CMAKE_CURRENT_SOURCE_DIR}/consumer/run.cmake")
