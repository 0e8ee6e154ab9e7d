partkeep_test(partkeep_options_file_test
  SOURCES options_file_test.cpp
  LINK partkeep_options_file partkeep_test_support)
