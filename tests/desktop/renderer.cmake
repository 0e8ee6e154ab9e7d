find_package(Qt6 REQUIRED COMPONENTS Widgets Test)

partkeep_library(partkeep_played_user SOURCES played_user.cpp LINK Qt6::Widgets Qt6::Test ${PARTKEEP_GTEST})
target_include_directories(partkeep_played_user PUBLIC "${PROJECT_SOURCE_DIR}")

partkeep_test(renderer_test
  SOURCES renderer_keypad_test.cpp renderer_picture_test.cpp renderer_window_test.cpp
  LINK partkeep_played_user partkeep_qt_windows partkeep_companion_dialogs partkeep_test_support)
