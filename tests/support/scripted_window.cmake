partkeep_library(partkeep_scripted_window
  SOURCES scripted_window.cpp scripted_window_controls.cpp
  LINK partkeep_recorder partkeep_templates ${PARTKEEP_GTEST})
