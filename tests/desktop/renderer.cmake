find_package(Qt6 REQUIRED COMPONENTS Widgets Test)

partkeep_library(partkeep_played_user SOURCES played_user.cpp LINK Qt6::Widgets Qt6::Test ${PARTKEEP_GTEST})
target_include_directories(partkeep_played_user PUBLIC "${PROJECT_SOURCE_DIR}")

partkeep_test(renderer_test
  SOURCES renderer_keypad_test.cpp renderer_list_test.cpp renderer_picture_test.cpp renderer_suite_test.cpp
    renderer_window_test.cpp
  LINK partkeep_played_user partkeep_qt_windows partkeep_companion_dialogs partkeep_test_support)

# Once per scale of the screen: the scale counts from the start of a process.
partkeep_test(renderer_layout_test
  SOURCES renderer_layout_test.cpp
  LINK partkeep_played_user partkeep_qt_windows partkeep_selection partkeep_scripted_control partkeep_test_support)
foreach(scale IN ITEMS 1.5 2)
  add_test(NAME renderer_layout_test_at_${scale} COMMAND renderer_layout_test)
  set_tests_properties(renderer_layout_test_at_${scale} PROPERTIES
    TIMEOUT 300 ENVIRONMENT "QT_SCALE_FACTOR=${scale}")
endforeach()
