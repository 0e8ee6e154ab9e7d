# Temporary folders for all tests, and on Linux the faults that only a file system of one's own can show.
set(sources temporary_folder.cpp)
if(NOT WIN32)
  list(APPEND sources linux_faults.cpp)
endif()
partkeep_library(partkeep_test_support SOURCES ${sources})
target_include_directories(partkeep_test_support PUBLIC "${PROJECT_SOURCE_DIR}")
