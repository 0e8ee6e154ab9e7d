partkeep_library(partkeep_recorder SOURCES recorder.cpp LINK partkeep_platform)
target_include_directories(partkeep_recorder PUBLIC "${PROJECT_SOURCE_DIR}")
