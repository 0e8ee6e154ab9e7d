set(sources server_list_file_test.cpp)
if(NOT WIN32)
  list(APPEND sources server_list_file_faults_test.cpp)
endif()
partkeep_test(server_list_file_test
  SOURCES ${sources}
  LINK partkeep_server_list_file partkeep_scripted_control partkeep_test_support)
