# Needs mounts of Linux. The C interface is taken in as a source, so that its windows can be the test's.
partkeep_test(operator_runs_test
  SOURCES operator_run.cpp operator_runs_test.cpp "${PROJECT_SOURCE_DIR}/src/desktop/c_interface.cpp"
  LINK
    partkeep_host
    partkeep_qt_windows
    partkeep_library_fixture
    partkeep_library_commands
    partkeep_test_support)
target_include_directories(operator_runs_test PRIVATE "${PROJECT_SOURCE_DIR}/include")
