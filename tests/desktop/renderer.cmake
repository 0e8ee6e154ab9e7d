find_package(Qt6 REQUIRED COMPONENTS Widgets Test)

partkeep_library(partkeep_played_user SOURCES played_user.cpp LINK Qt6::Widgets Qt6::Test ${PARTKEEP_GTEST})
target_include_directories(partkeep_played_user PUBLIC "${PROJECT_SOURCE_DIR}")

partkeep_test(renderer_test
  SOURCES renderer_keypad_test.cpp renderer_picture_test.cpp renderer_window_test.cpp
  LINK partkeep_played_user partkeep_qt_windows partkeep_companion_dialogs partkeep_test_support)

# On a real X server, with real input.
partkeep_test(untimely_input_test
  SOURCES untimely_input_test.cpp x_close.cpp
  LINK partkeep_played_user partkeep_qt_windows partkeep_selection partkeep_scripted_control partkeep_test_support X11
  UNDER "${CMAKE_CURRENT_SOURCE_DIR}/under_x_server")
