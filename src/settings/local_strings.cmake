partkeep_library(partkeep_local_strings
  SOURCES local_strings.cpp
  LINK partkeep_process_values partkeep_string_resource)
