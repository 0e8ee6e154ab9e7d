partkeep_library(partkeep_server_list_file
  SOURCES server_list_file.cpp
  LINK partkeep_controls partkeep_platform)
