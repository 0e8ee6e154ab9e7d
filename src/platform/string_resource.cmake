# Apart from the other services, so that only who shows a text carries the table.
if(WIN32)
  partkeep_library(partkeep_string_resource SOURCES windows/string_resource.cpp)
else()
  partkeep_library(partkeep_string_resource SOURCES posix/string_resource.cpp LINK partkeep_string_table)
endif()
