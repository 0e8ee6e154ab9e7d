partkeep_fuzz(staging_fuzz SOURCES staging_fuzz.cpp LINK partkeep_partdata)
target_include_directories(staging_fuzz PRIVATE "${PROJECT_SOURCE_DIR}")
