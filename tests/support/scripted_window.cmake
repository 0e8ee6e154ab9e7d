partkeep_library(partkeep_scripted_window
  SOURCES scripted_window.cpp
  LINK partkeep_recorder partkeep_templates ${PARTKEEP_GTEST})
